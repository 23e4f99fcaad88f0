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
