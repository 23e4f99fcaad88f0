# The printing tests draw the library's own dialogs, so the test program
# carries the dialog templates too, and it compares them with the DLL's.
if(WIN32 AND TARGET prism_tests)
  target_sources(prism_tests PRIVATE ${PROJECT_SOURCE_DIR}/print/print.rc ${CMAKE_CURRENT_SOURCE_DIR}/device/test_printer.cpp)
  target_compile_definitions(prism_tests PRIVATE PRISM_DLL_FILE="$<TARGET_FILE:prism32>")
  target_link_libraries(prism_tests PRIVATE winspool)
  add_dependencies(prism_tests prism32)
endif()

# The main job's printed page: a host that prints a sample through the DLL.
if(WIN32)
  add_executable(print_sample ${CMAKE_CURRENT_SOURCE_DIR}/device/print_sample.cpp
                              ${CMAKE_CURRENT_SOURCE_DIR}/device/test_printer.cpp)
  target_include_directories(print_sample PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(print_sample PRIVATE prism32 winspool)
endif()
