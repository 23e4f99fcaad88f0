# Fuzz targets of the codec modules' readers: the in-house PCX, DCX, TGA and
# CALS parsers and the libtiff and giflib front ends.
set(m ${PROJECT_SOURCE_DIR}/modules)
set(PRISM_MODULE_FUZZ
    "pcx|1|${m}/birch/pcx_read.c"
    "dcx|2|${m}/birch/pcx_read.c,${m}/birch/dcx_pages.c"
    "tga|3|${m}/elder/tga_read.c"
    "cals|4|${m}/alder/cals_raster.c,${m}/alder/tiff_memory.c,${m}/alder/tiff_read.c,${m}/alder/tiff_write.c|TIFF"
    "tiff|5|${m}/alder/tiff_memory.c,${m}/alder/tiff_read.c|TIFF"
    "gif|6|${m}/cedar/gif_read.c|GIF")
foreach(entry ${PRISM_MODULE_FUZZ})
  string(REPLACE "|" ";" parts "${entry}")
  list(GET parts 0 name)
  list(GET parts 1 reader)
  list(GET parts 2 sources)
  string(REPLACE "," ";" sources "${sources}")
  list(LENGTH parts n)
  set(libs "")
  if(n GREATER 3)
    list(GET parts 3 package)
    find_package(${package} QUIET)
    if(NOT ${package}_FOUND)
      continue()
    endif()
    set(libs ${package}::${package})
  endif()
  add_executable(fuzz_${name} ${CMAKE_CURRENT_LIST_DIR}/fuzz_module_readers.cpp ${sources})
  target_compile_definitions(fuzz_${name} PRIVATE PRISM_FUZZ_READER=${reader})
  target_include_directories(fuzz_${name} PRIVATE ${m} ${m}/common)
  target_link_libraries(fuzz_${name} PRIVATE prism_module_common prism32_static ${libs})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  add_dependencies(fuzzers fuzz_${name})
endforeach()
