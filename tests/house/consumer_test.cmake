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

# Another system's programs run in an emulator, and those of Windows find DLLs only beside them.
if(TOOLCHAIN_FILE)
    set(for_target
        -D CMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE}
        -D CMAKE_FIND_ROOT_PATH=${prefix}
        -D CMAKE_RUNTIME_OUTPUT_DIRECTORY=${prefix}/bin)
    set(programs ${prefix}/bin)
else()
    set(for_target -D CMAKE_CXX_COMPILER=${CXX_COMPILER})
    set(programs ${build})
endif()

step("Installing" ${CMAKE_COMMAND} --install ${BUILD_DIR} --config "${CONFIG}" --prefix ${prefix})
step("Configuring the consumer" ${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${build} -G ${GENERATOR}
    -D CMAKE_PREFIX_PATH=${prefix}
    ${for_target}
    -D CMAKE_BUILD_TYPE=${CONFIG}
    -D CMAKE_CXX_FLAGS=${CXX_FLAGS}
    -D EXPECTED_VERSION=${VERSION}
    -D EXPECTED_PREFIX=${prefix})
step("Building the consumer" ${CMAKE_COMMAND} --build ${build} --config "${CONFIG}")
step("Running the consumer" ${EMULATOR} ${programs}/consumer${EXECUTABLE_SUFFIX})
message("${step_output}")

set(tool ${prefix}/bin/kxmodel${EXECUTABLE_SUFFIX})
if(EXISTS ${tool})
    step("Running the installed tool" ${EMULATOR} ${tool} --help)
endif()
