# Installs the build into a fresh prefix, builds a tiny C host against it
# twice (CMake package, pkg-config) and has each load a TIFF fax page and
# save it as BMP.
#   cmake -DBUILD=dir -DWORK=dir -DLIBDIR=lib -DCC=cc -DSAMPLE=file -P installed_host.cmake
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/installed_host -B ${WORK}/host -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/host)
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(pkg-config --cflags --libs prism32)
separate_arguments(flags UNIX_COMMAND "${out}")
run(${CC} ${CMAKE_CURRENT_LIST_DIR}/installed_host/host.c ${flags} -Wl,-rpath,${prefix}/${LIBDIR} -o ${WORK}/host-pc)

foreach(host ${WORK}/host/host ${WORK}/host-pc)
  file(REMOVE ${WORK}/page.bmp)
  run(${host} ${SAMPLE} ${WORK}/page.bmp)
  if(NOT out MATCHES "^320 x 240, 1 bits")
    message(FATAL_ERROR "${host}: unexpected image: ${out}")
  endif()
  file(READ ${WORK}/page.bmp magic LIMIT 2)
  file(SIZE ${WORK}/page.bmp size)
  # 14 + 40 + 8 bytes of table + 240 rows of 40 bytes
  if(NOT magic STREQUAL "BM" OR NOT size EQUAL 9662)
    message(FATAL_ERROR "${host}: the BMP written is not the page (${magic}, ${size} bytes)")
  endif()
  message(STATUS "${host}: ${out}")
endforeach()
