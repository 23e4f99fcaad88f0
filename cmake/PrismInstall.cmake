# Installing: the library, its header, the codec modules beside the library,
# the prism program, a CMake package (find_package(prism32) gives the
# imported target prism32::prism32) and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(NOT WIN32)
  # The library looks for codec modules by bare file name; beside itself is
  # one of the places the dynamic loader searches on its behalf.
  set_target_properties(prism32 PROPERTIES BUILD_RPATH "\$ORIGIN" INSTALL_RPATH "\$ORIGIN")
endif()

# Windows keeps the DLLs (library and modules) in bin, beside the host's
# programs; elsewhere the modules sit beside libprism32.so.
if(WIN32)
  set(PRISM_MODULE_DIR ${CMAKE_INSTALL_BINDIR})
else()
  set(PRISM_MODULE_DIR ${CMAKE_INSTALL_LIBDIR})
endif()

install(TARGETS prism32
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/prism32.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(PRISM_MODULE_TARGETS)
  install(TARGETS ${PRISM_MODULE_TARGETS} LIBRARY DESTINATION ${PRISM_MODULE_DIR} RUNTIME DESTINATION ${PRISM_MODULE_DIR})
endif()
if(TARGET prism)
  if(NOT WIN32)
    set_target_properties(prism PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  endif()
  install(TARGETS prism RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# The package files name their places relative to themselves, so an
# installed tree may be moved.
set(PRISM_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/prism32)
file(RELATIVE_PATH PRISM_PACKAGE_TO_PREFIX /${PRISM_PACKAGE_DIR} /)
file(RELATIVE_PATH PRISM_PKGCONFIG_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
if(WIN32)
  set(PRISM_IMPORTED_LOCATION "${CMAKE_INSTALL_BINDIR}/PRISM32.DLL")
  set(PRISM_IMPORTED_IMPLIB "${CMAKE_INSTALL_LIBDIR}/libprism32dll.dll.a")
  set(PRISM_PKGCONFIG_LIBS "-lprism32dll")
else()
  set(PRISM_IMPORTED_LOCATION "${CMAKE_INSTALL_LIBDIR}/libprism32.so.${PROJECT_VERSION}")
  set(PRISM_IMPORTED_IMPLIB "")
  set(PRISM_PKGCONFIG_LIBS "-lprism32")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/prism32Config.cmake.in ${CMAKE_BINARY_DIR}/package/prism32Config.cmake @ONLY)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/prism32ConfigVersion.cmake
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
configure_file(${CMAKE_CURRENT_LIST_DIR}/prism32.pc.in ${CMAKE_BINARY_DIR}/package/prism32.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/prism32Config.cmake ${CMAKE_BINARY_DIR}/package/prism32ConfigVersion.cmake
        DESTINATION ${PRISM_PACKAGE_DIR})
install(FILES ${CMAKE_BINARY_DIR}/package/prism32.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
