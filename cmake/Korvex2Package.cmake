# What find_package(Korvex2) finds: once for the installation, once for the build tree.
include(CMakePackageConfigHelpers)
include(Korvex2Documents)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Korvex2")
set(build_package_folder "${PROJECT_BINARY_DIR}/package")

# The installation can be moved: the files find the rest from where they lie themselves.
set(package_modules_dir "${CMAKE_INSTALL_LIBDIR}/korvex2/modules")
configure_package_config_file(cmake/Korvex2Config.cmake.in "${PROJECT_BINARY_DIR}/package-to-install/Korvex2Config.cmake"
  INSTALL_DESTINATION "${package_folder}"
  PATH_VARS package_modules_dir)
set(package_modules_dir modules)
configure_package_config_file(cmake/Korvex2Config.cmake.in "${build_package_folder}/Korvex2Config.cmake"
  INSTALL_DESTINATION "${build_package_folder}"
  INSTALL_PREFIX "${PROJECT_BINARY_DIR}"
  PATH_VARS package_modules_dir)

write_basic_package_version_file("${build_package_folder}/Korvex2ConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
configure_file(cmake/Korvex2Module.cmake "${build_package_folder}/Korvex2Module.cmake" COPYONLY)

install(TARGETS korvex2_interfaces EXPORT Korvex2Targets)
export(EXPORT Korvex2Targets NAMESPACE Korvex2:: FILE "${build_package_folder}/Korvex2Targets.cmake")
install(EXPORT Korvex2Targets NAMESPACE Korvex2:: DESTINATION "${package_folder}" COMPONENT Development)
install(FILES
    "${PROJECT_BINARY_DIR}/package-to-install/Korvex2Config.cmake"
    "${build_package_folder}/Korvex2ConfigVersion.cmake"
    cmake/Korvex2Module.cmake
  DESTINATION "${package_folder}" COMPONENT Development)
