# zeb_program(<target> LINKS <library>… SOURCES <file>…): a program compiled with our warnings.
function(zeb_program target)
  cmake_parse_arguments(PARSE_ARGV 1 program "" "" "SOURCES;LINKS")
  add_executable(${target} ${program_SOURCES})
  zeb_warnings(${target})
  target_link_libraries(${target} PRIVATE ${program_LINKS})
endfunction()
