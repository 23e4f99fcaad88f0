# The real codec modules, reached through the library's exports as a host
# reaches them: a program of its own (the unit suite's working directory
# holds stand-ins under the same names), run where no stand-in is, and
# finding the modules beside the library through its run path. The source
# names do not end in _test.cpp, so the unit suite does not take them in.
# Windows: the 64-bit build runs it under wine, from beside the modules.
if(TARGET module_birch32 AND (NOT CMAKE_CROSSCOMPILING OR CMAKE_CROSSCOMPILING_EMULATOR))
  add_executable(module_tests ${CMAKE_CURRENT_LIST_DIR}/round_trips.cpp ${CMAKE_CURRENT_LIST_DIR}/damaged_files.cpp
                 ${CMAKE_CURRENT_SOURCE_DIR}/support/test_support.cpp ${CMAKE_CURRENT_SOURCE_DIR}/support/main.cpp)
  target_include_directories(module_tests PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(module_tests PRIVATE prism32_static ${PRISM_GTEST})
  # the modules take GlobalAlloc and its kin from the program, as from
  # libprism32.so in a host that links the shared library
  set_target_properties(module_tests PROPERTIES ENABLE_EXPORTS ON BUILD_RPATH ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  add_dependencies(module_tests prism_modules)
  # rows of formats whose module is not built are skipped
  foreach(base alder cedar hazel)
    string(TOUPPER ${base} upper)
    if(TARGET module_${base} OR TARGET module_${base}32)
      target_compile_definitions(module_tests PRIVATE PRISM_HAVE_${upper}=1)
    endif()
  endforeach()
  if(WIN32)
    set_target_properties(module_tests PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PRISM_WINDOWS_MODULE_DIR})
  endif()
  set(PRISM_MODULE_WORKDIR ${CMAKE_BINARY_DIR}/module-work)
  file(MAKE_DIRECTORY ${PRISM_MODULE_WORKDIR})
  add_test(NAME codec_modules COMMAND module_tests --gtest_brief=1 WORKING_DIRECTORY ${PRISM_MODULE_WORKDIR})
  if(NOT WIN32)
    # Under the sanitizers dlopen is called from their runtime, whose run
    # path is not the program's: name the modules' folder outright.
    set_tests_properties(codec_modules PROPERTIES ENVIRONMENT LD_LIBRARY_PATH=${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
  endif()
endif()

# Independent readers and writers (Pillow, tiffcp, tiffinfo, giftext)
# against the modules, where they are installed.
find_program(PRISM_SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(PRISM_TIFFCP tiffcp)
find_program(PRISM_GIFTEXT giftext)
# (Not in sanitizer builds: an instrumented library cannot be loaded into
# an uninstrumented host.)
if(TARGET module_tests AND PRISM_SYSTEM_PYTHON AND PRISM_TIFFCP AND PRISM_GIFTEXT AND NOT PRISM_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  execute_process(COMMAND ${PRISM_SYSTEM_PYTHON} -c "import PIL" RESULT_VARIABLE no_pillow OUTPUT_QUIET ERROR_QUIET)
  if(NOT no_pillow)
    set(PRISM_ORACLE_WORKDIR ${CMAKE_BINARY_DIR}/module-oracle)
    file(MAKE_DIRECTORY ${PRISM_ORACLE_WORKDIR})
    add_test(NAME codec_modules_independent
             COMMAND ${PRISM_SYSTEM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/independent_readers.py $<TARGET_FILE:prism32>
             WORKING_DIRECTORY ${PRISM_ORACLE_WORKDIR})
  endif()
endif()

# An installed tree, as a host builds against it.
find_program(PRISM_PKG_CONFIG pkg-config)
if(TARGET module_tests AND PRISM_PKG_CONFIG AND NOT PRISM_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  add_test(NAME installed_host
           COMMAND ${CMAKE_COMMAND} -DBUILD=${CMAKE_BINARY_DIR} -DWORK=${CMAKE_BINARY_DIR}/installed-host
                   -DLIBDIR=${CMAKE_INSTALL_LIBDIR} -DCC=${CMAKE_C_COMPILER} -DSAMPLE=${PROJECT_SOURCE_DIR}/samples/fax.tif
                   -P ${CMAKE_CURRENT_LIST_DIR}/installed_host.cmake)
endif()
