# Installs the host from HOST_BUILD into a folder below WORK, then builds and runs a program with what is there.
file(REMOVE_RECURSE "${WORK}")
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run("${CMAKE_COMMAND}" --install "${HOST_BUILD}" --prefix "${WORK}/prefix")
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/consumer" -B "${WORK}/build" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${WORK}/prefix" "-DHEADERS=${WORK}/prefix/include/poshost" "-DCMAKE_CXX_FLAGS=${FLAGS}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DLog4Qt_DIR=${LOG4QT}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")
run("${WORK}/build/consumer")
file(REMOVE_RECURSE "${WORK}")
