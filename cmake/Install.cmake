# Installs the headers of both libraries below include/zebutilities/, the CMake package ZEBUtilities
# and the pkg-config module zebutilities.
include(CMakePackageConfigHelpers)

set(zeb_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZEBUtilities")
set(zeb_header_dir "${CMAKE_INSTALL_INCLUDEDIR}/zebutilities")
set(zeb_frameworks_dir "${CMAKE_INSTALL_LIBDIR}/zebutilities/Frameworks")

install(TARGETS ZEBPlatform ZEBUtilities EXPORT ZEBUtilitiesTargets
  FILE_SET HEADERS DESTINATION "${zeb_header_dir}")
install(EXPORT ZEBUtilitiesTargets NAMESPACE ZEB:: DESTINATION "${zeb_package_dir}")

# Programs that link our static libraries also link the outside libraries that these were built
# with; our shared libraries refer to them by themselves.
set(ZEB_FIND_DEPENDENCIES "")
set(ZEB_PKGCONFIG_REQUIRES "")
set(ZEB_PKGCONFIG_LIBS "")
if(NOT BUILD_SHARED_LIBS)
  string(APPEND ZEB_FIND_DEPENDENCIES "find_dependency(Threads)\n")
  set(ZEB_PKGCONFIG_LIBS "-Wl,--undefined=zebRegisterClassesByName -pthread")
  get_property(used_libraries GLOBAL PROPERTY ZEB_OUTSIDE_LIBRARIES_USED)
  foreach(name IN LISTS used_libraries)
    get_property(package GLOBAL PROPERTY ZEB_OUTSIDE_${name}_PACKAGE)
    get_property(modules GLOBAL PROPERTY ZEB_OUTSIDE_${name}_PKGCONFIG)
    list(JOIN package " " package)
    list(JOIN modules " " modules)
    if(package)
      string(APPEND ZEB_FIND_DEPENDENCIES "find_dependency(${package})\n")
    else()
      string(APPEND ZEB_FIND_DEPENDENCIES
        "find_dependency(PkgConfig)\n"
        "pkg_check_modules(${name} REQUIRED IMPORTED_TARGET ${modules})\n")
    endif()
    string(APPEND ZEB_PKGCONFIG_REQUIRES " ${modules}")
  endforeach()
endif()

configure_package_config_file(cmake/ZEBUtilitiesConfig.cmake.in cmake/ZEBUtilitiesConfig.cmake
  INSTALL_DESTINATION "${zeb_package_dir}" PATH_VARS zeb_frameworks_dir NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfig.cmake"
  "${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfigVersion.cmake"
  DESTINATION "${zeb_package_dir}")

# The pkg-config module computes its prefix from its own place, so that the installed tree can be
# moved.
file(RELATIVE_PATH zeb_prefix_from_pkgconfig
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/zebutilities.pc.in cmake/zebutilities.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/cmake/zebutilities.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
