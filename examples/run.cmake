# Runs an example on a copy of a real profile in a folder of its own.
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}/ICC")
configure_file("${CMYK}" "${FOLDER}/ICC/press.icc" COPYONLY)
execute_process(COMMAND "${PROGRAM}" press.icc "${OTHER}" WORKING_DIRECTORY "${FOLDER}/ICC"
                RESULT_VARIABLE result)
file(REMOVE_RECURSE "${FOLDER}")
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${result}")
endif()
