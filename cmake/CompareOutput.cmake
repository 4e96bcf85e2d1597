# cmake -DPROGRAM=… -DEXPECTED=… -P CompareOutput.cmake: runs the program and fails unless it succeeds
# and prints exactly what the file holds.
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${PROGRAM}" OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ "${EXPECTED}" expected)
if(NOT "${printed}" STREQUAL "${expected}")
  message(FATAL_ERROR "The document promises\n${expected}--- but the program prints\n${printed}---")
endif()
