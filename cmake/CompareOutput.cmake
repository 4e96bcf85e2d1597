# cmake -DPROGRAM=… -DEXPECTED=… -P CompareOutput.cmake: runs the program and fails unless it
# succeeds and prints exactly the content of the file EXPECTED.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ "${EXPECTED}" expected)
if(NOT "${printed}" STREQUAL "${expected}")
  message(FATAL_ERROR "${PROGRAM} should print\n${expected}--- but it printed\n${printed}---")
endif()
