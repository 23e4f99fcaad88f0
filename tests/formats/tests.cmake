# Stand-in codec modules for the format tests, under the exact file names
# the library looks for (no "lib" prefix, ".DLL" suffix), placed in the
# tests' working directory: plat::OpenModule tries ./NAME there first, and
# LoadLibraryA searches the working directory too.  A test can hide a module
# by renaming its file for a while.
set(PRISM_STANDIN_MODULES ALDER32 BIRCH32 CEDAR32 ELDER32 ALDER BIRCH CEDAR ELDER HAZEL)
foreach(base ${PRISM_STANDIN_MODULES})
  string(TOLOWER "standin_${base}" target)
  add_library(${target} MODULE ${CMAKE_CURRENT_LIST_DIR}/standin_codec.c)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_compile_definitions(${target} PRIVATE STANDIN_MODULE="${base}.DLL")
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME ${base} SUFFIX ".DLL"
    LIBRARY_OUTPUT_DIRECTORY ${PRISM_TEST_WORKDIR}
    RUNTIME_OUTPUT_DIRECTORY ${PRISM_TEST_WORKDIR})
  if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Entry names without their stdcall decoration, as GetProcAddress is
    # asked for them.
    target_link_options(${target} PRIVATE -Wl,--kill-at)
  endif()
  add_dependencies(prism_tests ${target})
endforeach()

if(NOT WIN32)
  # The load-side stand-ins make their images with the host's GlobalAlloc,
  # which a POSIX test program must therefore export to the modules it
  # loads, as libprism32.so does for any host.
  set_target_properties(prism_tests PROPERTIES ENABLE_EXPORTS ON)
endif()
