# Installs the build into a scratch prefix, builds the tiny host against it and runs it.
# Expects BUILD_DIR, SOURCE_DIR, WORK_DIR.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
                RESULT_VARIABLE rc OUTPUT_QUIET)
if(rc)
    message(FATAL_ERROR "install failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build
                        -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix -DCMAKE_BUILD_TYPE=Release
                RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "configuring the tiny host failed: ${rc}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "building the tiny host failed: ${rc}")
endif()
execute_process(COMMAND ${WORK_DIR}/build/tiny_host RESULT_VARIABLE rc)
if(rc)
    message(FATAL_ERROR "the tiny host failed: ${rc}")
endif()
