# Installs the library into a scratch prefix, builds a host project against it through
# find_package and runs it; a host asking for a newer minor version than the installed one is
# turned away at configure time.
file(REMOVE_RECURSE ${PREFIX} ${CONSUMER_BUILD} ${CONSUMER_BUILD}-newer)
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGN}")
    endif()
endfunction()
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${CONSUMER_BUILD} -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${CONSUMER_BUILD})
run(${CONSUMER_BUILD}/consumer)

execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${CONSUMER_BUILD}-newer -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${PREFIX} -DVDE_WANT_VERSION=${NEWER_VERSION}
    RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
if(rc EQUAL 0 OR NOT err MATCHES "VelDiagEdit")
    message(FATAL_ERROR "a host asking for version ${NEWER_VERSION} was not turned away: ${err}")
endif()
message("a host asking for ${NEWER_VERSION} is turned away")
