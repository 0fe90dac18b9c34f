# SPDX-License-Identifier: MIT
# Runs COMMAND (a list) in FOLDER, which is emptied, behind PREPARE if that is given. The output
# must match SAYS; with FAILS the command must end with 1 and say one line on standard error.
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
if(PREPARE)
  execute_process(COMMAND ${PREPARE} WORKING_DIRECTORY ${FOLDER} COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND ${COMMAND} WORKING_DIRECTORY ${FOLDER}
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
message("${output}${error}")
if(FAILS)
  if(NOT result STREQUAL "1")
    message(FATAL_ERROR "It should have ended with 1, not with ${result}.")
  endif()
  if(NOT error MATCHES "^[^\n]+\n$")
    message(FATAL_ERROR "It should have said one line on standard error.")
  endif()
elseif(NOT result STREQUAL "0")
  message(FATAL_ERROR "It should have ended with 0, not with ${result}.")
endif()
if(NOT "${output}${error}" MATCHES "${SAYS}")
  message(FATAL_ERROR "It should have said: ${SAYS}")
endif()
