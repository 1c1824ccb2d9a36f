# SPDX-License-Identifier: MIT
# Installs a build tree into a scratch prefix and builds and runs a small project against that prefix.

function(step description)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${description} failed (${result}):\n${output}")
    endif()
    message(STATUS "${description}: good")
    set(step_output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${SCRATCH_DIR}/prefix)
set(build ${SCRATCH_DIR}/build)
file(REMOVE_RECURSE ${SCRATCH_DIR})

step("Installing" ${CMAKE_COMMAND} --install ${BUILD_DIR} --config "${CONFIG}" --prefix ${prefix})
step("Configuring the consumer" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${build} -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${prefix}
    -D CMAKE_BUILD_TYPE=${CONFIG}
    -D CMAKE_CXX_COMPILER=${CXX_COMPILER}
    -D CMAKE_CXX_FLAGS=${CXX_FLAGS}
    -D EXPECTED_VERSION=${VERSION}
    -D EXPECTED_PREFIX=${prefix})
step("Building the consumer" ${CMAKE_COMMAND} --build ${build} --config "${CONFIG}")
step("Running the consumer" ${build}/consumer)
message("${step_output}")

if(EXISTS ${prefix}/bin/kxmodel)
    step("Running the installed tool" ${prefix}/bin/kxmodel --help)
endif()
