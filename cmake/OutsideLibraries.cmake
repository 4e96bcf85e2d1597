# The outside libraries that modules may name as PRIVATE_LIBRARIES, and how each is found: by this
# build, and by users of the static library with find_package() or with pkg-config.
#
# zeb_outside_library(<name> PKGCONFIG <module>…
#                     [PACKAGE <find_package arguments>… TARGETS <target>…])
#   Without PACKAGE the library is found through its pkg-config modules.

find_package(Threads REQUIRED)
set(CMAKE_FIND_PACKAGE_TARGETS_GLOBAL ON)  # programs in other directories link them, too

function(zeb_outside_library name)
  cmake_parse_arguments(PARSE_ARGV 1 outside "" "" "PACKAGE;TARGETS;PKGCONFIG")
  if(NOT outside_PACKAGE)
    set(outside_TARGETS PkgConfig::${name})
  endif()
  foreach(part PACKAGE TARGETS PKGCONFIG)
    set_property(GLOBAL PROPERTY ZEB_OUTSIDE_${name}_${part} ${outside_${part}})
  endforeach()
endfunction()

# zeb_find_outside_library(<name> <result>): finds the library, records that the build uses it, and
# sets the variable <result> to its targets.
function(zeb_find_outside_library name result)
  foreach(part PACKAGE TARGETS PKGCONFIG)
    get_property(${part} GLOBAL PROPERTY ZEB_OUTSIDE_${name}_${part})
  endforeach()
  if(NOT PKGCONFIG)
    message(FATAL_ERROR "${name} is not declared in cmake/OutsideLibraries.cmake.")
  endif()
  get_property(used GLOBAL PROPERTY ZEB_OUTSIDE_LIBRARIES_USED)
  if(NOT name IN_LIST used)
    if(PACKAGE)
      find_package(${PACKAGE} REQUIRED)
    else()
      find_package(PkgConfig REQUIRED)
      pkg_check_modules(${name} REQUIRED IMPORTED_TARGET GLOBAL ${PKGCONFIG})
    endif()
    set_property(GLOBAL APPEND PROPERTY ZEB_OUTSIDE_LIBRARIES_USED ${name})
  endif()
  set(${result} ${TARGETS} PARENT_SCOPE)
endfunction()

zeb_outside_library(fmt      PKGCONFIG fmt              PACKAGE fmt      TARGETS fmt::fmt)
zeb_outside_library(spdlog   PKGCONFIG spdlog           PACKAGE spdlog   TARGETS spdlog::spdlog)
zeb_outside_library(simdjson PKGCONFIG simdjson         PACKAGE simdjson TARGETS simdjson::simdjson)
zeb_outside_library(icu      PKGCONFIG icu-uc icu-i18n  PACKAGE ICU COMPONENTS uc i18n
                                                                         TARGETS ICU::uc ICU::i18n)
zeb_outside_library(crypto   PKGCONFIG libcrypto        PACKAGE OpenSSL  TARGETS OpenSSL::Crypto)
zeb_outside_library(sqlite3  PKGCONFIG sqlite3          PACKAGE SQLite3  TARGETS SQLite::SQLite3)
zeb_outside_library(zlib     PKGCONFIG zlib             PACKAGE ZLIB     TARGETS ZLIB::ZLIB)
zeb_outside_library(nettle   PKGCONFIG nettle)
zeb_outside_library(expat    PKGCONFIG expat            PACKAGE EXPAT    TARGETS EXPAT::EXPAT)
zeb_outside_library(libsecret PKGCONFIG libsecret-1)
