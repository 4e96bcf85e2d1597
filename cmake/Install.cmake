# Installs the headers of all libraries below include/zebutilities/, the CMake package ZEBUtilities
# and the pkg-config modules. Each component has its own set of targets, list of outside libraries
# and pkg-config module, so that a program needs only what the components it asks for need.
include(CMakePackageConfigHelpers)

set(zeb_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZEBUtilities")
set(zeb_header_dir "${CMAKE_INSTALL_INCLUDEDIR}/zebutilities")
set(zeb_frameworks_dir "${CMAKE_INSTALL_LIBDIR}/zebutilities/Frameworks")

# The pkg-config modules compute their prefix from their own place, so that the installed tree can
# be moved.
file(RELATIVE_PATH zeb_prefix_from_pkgconfig
  "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")

# zeb_install_component(<component> PKGCONFIG <module> [BUILT_ON <component>] [KEPT_SYMBOL <name>])
#   Installs the component's libraries. Users of the component also get the component BUILT_ON,
#   which is installed first. KEPT_SYMBOL names a function that the library is only weakly referred
#   to by; programs that link statically must be told to keep it.
function(zeb_install_component component)
  cmake_parse_arguments(PARSE_ARGV 1 install "" "PKGCONFIG;BUILT_ON;KEPT_SYMBOL" "")
  get_property(libraries GLOBAL PROPERTY ZEB_LIBRARIES_OF_${component})
  install(TARGETS ${libraries} EXPORT ZEB${component}Targets
    FILE_SET HEADERS DESTINATION "${zeb_header_dir}")
  install(EXPORT ZEB${component}Targets NAMESPACE ZEB:: DESTINATION "${zeb_package_dir}")

  # The linker looks for a symbol only in the libraries that follow, so the users come first.
  set(ZEB_PKGCONFIG_LIBS "")
  foreach(library IN LISTS libraries)
    string(PREPEND ZEB_PKGCONFIG_LIBS " -l${library}")
  endforeach()
  set(ZEB_PKGCONFIG_REQUIRES "")
  set(ZEB_FIND_DEPENDENCIES "")
  if(install_BUILT_ON)
    get_property(ZEB_PKGCONFIG_REQUIRES GLOBAL PROPERTY ZEB_PKGCONFIG_OF_${install_BUILT_ON})
    set(ZEB_FIND_DEPENDENCIES
      "include(\"\${CMAKE_CURRENT_LIST_DIR}/ZEB${install_BUILT_ON}Component.cmake\")\n")
  endif()
  # Programs that link our static libraries also link the outside libraries that these were built
  # with; our shared libraries refer to them by themselves.
  if(NOT BUILD_SHARED_LIBS)
    if(install_KEPT_SYMBOL)
      string(APPEND ZEB_PKGCONFIG_LIBS " -Wl,--undefined=${install_KEPT_SYMBOL}")
    endif()
    string(APPEND ZEB_PKGCONFIG_LIBS " -pthread")
    string(APPEND ZEB_FIND_DEPENDENCIES "find_dependency(Threads)\n")
    get_property(used_libraries GLOBAL PROPERTY ZEB_OUTSIDE_LIBRARIES_OF_${component})
    list(REMOVE_DUPLICATES used_libraries)
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
  set(ZEB_PKGCONFIG_NAME "${install_PKGCONFIG}")
  set_property(GLOBAL PROPERTY ZEB_PKGCONFIG_OF_${component} "${install_PKGCONFIG}")

  configure_file(cmake/Component.cmake.in cmake/ZEB${component}Component.cmake @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/cmake/ZEB${component}Component.cmake"
    DESTINATION "${zeb_package_dir}")
  configure_file(cmake/component.pc.in cmake/${install_PKGCONFIG}.pc @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/cmake/${install_PKGCONFIG}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()

zeb_install_component(Utilities PKGCONFIG zebutilities KEPT_SYMBOL zebRegisterClassesByName)
if(ZEB_BUILD_TEXT)
  zeb_install_component(Text PKGCONFIG zebutilities-text BUILT_ON Utilities
    KEPT_SYMBOL zebUppercaseFirstLetter)
  zeb_install_component(Contacts PKGCONFIG zebutilities-contacts BUILT_ON Text)
endif()
if(ZEB_BUILD_SECRET_SERVICE)
  zeb_install_component(SecretService PKGCONFIG zebutilities-secret-service BUILT_ON Utilities)
endif()

configure_package_config_file(cmake/ZEBUtilitiesConfig.cmake.in cmake/ZEBUtilitiesConfig.cmake
  INSTALL_DESTINATION "${zeb_package_dir}" PATH_VARS zeb_frameworks_dir NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfig.cmake"
  "${PROJECT_BINARY_DIR}/cmake/ZEBUtilitiesConfigVersion.cmake"
  DESTINATION "${zeb_package_dir}")
