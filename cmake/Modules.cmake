# An installed library consists of modules. Each module is a source folder and a target of its own,
# so that its outside libraries are visible to this module only.

# zeb_library(<library> EXPORT_NAME <name> COMPONENT <component> INCLUDE_ROOT <folder>
#             [MODULE_HEADERS <folder>] [BUILT_ON <library>…])
#   Begins a library, to which the following zeb_module() calls add. Its headers are included by
#   their path below INCLUDE_ROOT. The folder MODULE_HEADERS contains the module headers, each of
#   which includes all public headers of one module; they are installed with this library. Users
#   ask find_package() for the component and link the library as ZEB::<name>.
function(zeb_library library)
  cmake_parse_arguments(PARSE_ARGV 1 library
    "" "EXPORT_NAME;COMPONENT;INCLUDE_ROOT;MODULE_HEADERS" "BUILT_ON")
  # A library needs a source even if none of its modules has one.
  file(CONFIGURE OUTPUT "${library}.cpp" CONTENT "")
  add_library(${library} "${CMAKE_CURRENT_BINARY_DIR}/${library}.cpp")
  add_library(ZEB::${library_EXPORT_NAME} ALIAS ${library})
  target_compile_features(${library} PUBLIC cxx_std_20)
  target_link_libraries(${library} PUBLIC ${library_BUILT_ON} PRIVATE Threads::Threads)
  set(headers)
  if(library_MODULE_HEADERS)
    file(GLOB headers CONFIGURE_DEPENDS "${library_MODULE_HEADERS}/*.h")
  endif()
  target_sources(${library} PUBLIC FILE_SET HEADERS BASE_DIRS "${library_INCLUDE_ROOT}"
    FILES ${headers})
  set_target_properties(${library} PROPERTIES
    EXPORT_NAME ${library_EXPORT_NAME}
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN"
    ZEB_COMPONENT ${library_COMPONENT})
  set_property(GLOBAL APPEND PROPERTY ZEB_LIBRARIES ${library})
  set_property(GLOBAL APPEND PROPERTY ZEB_COMPONENTS ${library_COMPONENT})
  set_property(GLOBAL APPEND PROPERTY ZEB_LIBRARIES_OF_${library_COMPONENT} ${library})
  set(ZEB_LIBRARY ${library} PARENT_SCOPE)
  set(ZEB_INCLUDE_ROOT "${library_INCLUDE_ROOT}" PARENT_SCOPE)
  set(ZEB_BUILT_ON "${library_BUILT_ON}" PARENT_SCOPE)
endfunction()

# zeb_module(<folder> LAYER <number> [DEPENDS <module>…] [PRIVATE_LIBRARIES <outside library>…]
#            [INSTALLED_DETAIL <header name>…])
#   Adds the folder's sources and headers to the current library. The module may include the modules
#   that DEPENDS names. They are declared before it and have the same LAYER or a lower one.
#   tools/lint.py reads these calls and checks every include against them. Headers named *Private.h
#   are for the module alone; headers in its folder detail/ are also for the library's other
#   modules. They are not installed, except those of detail/ that public headers need:
#   INSTALLED_DETAIL names these, without ".h".
function(zeb_module folder)
  cmake_parse_arguments(PARSE_ARGV 1 module
    "" "LAYER" "DEPENDS;PRIVATE_LIBRARIES;INSTALLED_DETAIL")

  get_property(declared_modules GLOBAL PROPERTY ZEB_MODULES)
  foreach(dependency IN LISTS module_DEPENDS)
    if(NOT dependency IN_LIST declared_modules)
      message(FATAL_ERROR
        "The module ${folder} depends on ${dependency}, which is not declared before it.")
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY ZEB_MODULES ${folder})
  # Tests of a module link its library.
  set_property(GLOBAL PROPERTY ZEB_LIBRARY_OF_${folder} ${ZEB_LIBRARY})

  file(GLOB headers CONFIGURE_DEPENDS "${folder}/*.h")
  list(FILTER headers EXCLUDE REGEX "Private\\.h$")
  foreach(name IN LISTS module_INSTALLED_DETAIL)
    list(APPEND headers "${folder}/detail/${name}.h")
  endforeach()
  target_sources(${ZEB_LIBRARY} PUBLIC FILE_SET HEADERS FILES ${headers})

  file(GLOB sources CONFIGURE_DEPENDS "${folder}/*.cpp")
  if(NOT sources)
    return()
  endif()
  string(REPLACE "/" "_" module_target "zeb_module_${folder}")
  add_library(${module_target} OBJECT ${sources})
  zeb_warnings(${module_target})
  target_include_directories(${module_target} PRIVATE "${ZEB_INCLUDE_ROOT}")
  target_link_libraries(${module_target} PRIVATE ${ZEB_BUILT_ON})
  target_sources(${ZEB_LIBRARY} PRIVATE $<TARGET_OBJECTS:${module_target}>)
  foreach(name IN LISTS module_PRIVATE_LIBRARIES)
    zeb_find_outside_library(${name} outside_targets)
    get_target_property(component ${ZEB_LIBRARY} ZEB_COMPONENT)
    set_property(GLOBAL APPEND PROPERTY ZEB_OUTSIDE_LIBRARIES_OF_${component} ${name})
    target_link_libraries(${module_target} PRIVATE ${outside_targets})
    target_link_libraries(${ZEB_LIBRARY} PRIVATE ${outside_targets})
  endforeach()
endfunction()
