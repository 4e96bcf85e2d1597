# A storey is one installed library. It is made of rooms: source folders, each compiled as a target
# of its own, so that a room's outside libraries are seen by that room only.

# zeb_storey(<library> EXPORT_NAME <name> [BUILT_ON <library>])
#   Opens the library of the current folder, which is also the root of its includes, for the
#   zeb_room() calls that follow. Users link it as ZEB::<name>.
function(zeb_storey library)
  cmake_parse_arguments(PARSE_ARGV 1 storey "" "EXPORT_NAME;BUILT_ON" "")
  # The empty source keeps the library valid while none of its rooms has one.
  file(CONFIGURE OUTPUT "${library}.cpp" CONTENT "")
  add_library(${library} "${CMAKE_CURRENT_BINARY_DIR}/${library}.cpp")
  add_library(ZEB::${storey_EXPORT_NAME} ALIAS ${library})
  target_compile_features(${library} PUBLIC cxx_std_20)
  target_link_libraries(${library} PUBLIC ${storey_BUILT_ON} PRIVATE Threads::Threads)
  target_sources(${library} PUBLIC FILE_SET HEADERS BASE_DIRS "${CMAKE_CURRENT_SOURCE_DIR}")
  set_target_properties(${library} PROPERTIES
    EXPORT_NAME ${storey_EXPORT_NAME}
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN")
  set(ZEB_STOREY ${library} PARENT_SCOPE)
  set(ZEB_BUILT_ON "${storey_BUILT_ON}" PARENT_SCOPE)
endfunction()

# zeb_room(<folder> FLOOR <number> [DEPENDS <room>…] [PRIVATE_LIBRARIES <outside library>…])
#   Adds the folder's sources and headers to the current storey; a folder without sources adds none.
#   FLOOR and DEPENDS say what the room may include: rooms of its own floor or a lower one that are
#   declared before it. tools/lint.py reads these calls and checks every include against them.
#   Headers named *Private.h belong to the room alone and are not installed.
function(zeb_room folder)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "FLOOR" "DEPENDS;PRIVATE_LIBRARIES")

  get_property(declared_rooms GLOBAL PROPERTY ZEB_ROOMS)
  foreach(dependency IN LISTS room_DEPENDS)
    if(NOT dependency IN_LIST declared_rooms)
      message(FATAL_ERROR "Room ${folder} depends on ${dependency}, which is not declared before it.")
    endif()
  endforeach()
  set_property(GLOBAL APPEND PROPERTY ZEB_ROOMS ${folder})

  file(GLOB headers CONFIGURE_DEPENDS "${folder}/*.h")
  list(FILTER headers EXCLUDE REGEX "Private\\.h$")
  target_sources(${ZEB_STOREY} PUBLIC FILE_SET HEADERS FILES ${headers})

  file(GLOB sources CONFIGURE_DEPENDS "${folder}/*.cpp")
  if(NOT sources)
    return()
  endif()
  string(REPLACE "/" "_" room_target "zeb_room_${folder}")
  add_library(${room_target} OBJECT ${sources})
  zeb_warnings(${room_target})
  target_include_directories(${room_target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_link_libraries(${room_target} PRIVATE ${ZEB_BUILT_ON})
  target_sources(${ZEB_STOREY} PRIVATE $<TARGET_OBJECTS:${room_target}>)
  foreach(name IN LISTS room_PRIVATE_LIBRARIES)
    zeb_find_outside_library(${name} outside_targets)
    target_link_libraries(${room_target} PRIVATE ${outside_targets})
    target_link_libraries(${ZEB_STOREY} PRIVATE ${outside_targets})
  endforeach()
endfunction()
