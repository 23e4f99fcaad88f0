# The viewer's scripted mode: a program of its own that starts prismview
# under the emulator, as a user would, and checks the screenshots it saves.
if(WIN32 AND TARGET prismview)
  add_executable(prismview_scripted ${CMAKE_CURRENT_LIST_DIR}/prismview_scripted.cpp
                 ${CMAKE_CURRENT_LIST_DIR}/../support/test_support.cpp ${CMAKE_CURRENT_LIST_DIR}/../support/main.cpp)
  target_include_directories(prismview_scripted PRIVATE ${CMAKE_CURRENT_LIST_DIR}/..)
  target_link_libraries(prismview_scripted PRIVATE prism32_static ${PRISM_GTEST})
  add_dependencies(prismview_scripted prismview)
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    add_test(NAME viewer_scripted COMMAND prismview_scripted --gtest_brief=1 WORKING_DIRECTORY ${PRISM_TEST_WORKDIR})
  endif()
endif()

# The printing tests draw the library's own dialogs, so the test program
# carries the dialog templates too, and it compares them with the DLL's.
if(WIN32 AND TARGET prism_tests)
  target_sources(prism_tests PRIVATE ${PROJECT_SOURCE_DIR}/print/print.rc ${CMAKE_CURRENT_SOURCE_DIR}/device/test_printer.cpp
                 ${CMAKE_CURRENT_SOURCE_DIR}/support/device_support.cpp)
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
