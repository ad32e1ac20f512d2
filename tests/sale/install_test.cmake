# Installs the build tree BUILD into an empty prefix, moves that, and sells from there with what was installed: by the
# till, and by the smallest host, which is built against the installed package.
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}")
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/installed" --strip)
file(RENAME "${WORK}/installed" "${WORK}/moved")
set(prefix "${WORK}/moved")
if(CHECK_HARDENING)
    file(GLOB_RECURSE binaries "${prefix}/bin/*" "${prefix}/lib/*.so")
    run("${CHECK_HARDENING}" ${HARDENING_OPTION} ${binaries})
endif()
run("${CMAKE_COMMAND}" -S "${EXAMPLE}" -B "${WORK}/host" -G "${GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DLog4Qt_DIR=${LOG4QT}")
run("${CMAKE_COMMAND}" --build "${WORK}/host")
file(WRITE "${WORK}/sell" [=[
set -eu
"$1/bin/loyalty-sim" serve --database sim.db --port-file port >sim.log 2>&1 &
service=$!
trap 'kill $service; wait $service || true' EXIT
for try in $(seq 300); do [ -s port ] && break; sleep 0.1; done
printf '[Host]\ndataFolder = %s/data\n[Kvo]\nhost = http://127.0.0.1:%s\n' "$PWD" "$(cat port)" >till.ini
"$1/bin/kvo-till" run --config till.ini "$1/share/kvo/scenarios/card-update.json"
"$1/bin/kvo-till" journal --json --config till.ini | "$1/bin/loyalty-sim" compare --database sim.db --journal -
sed "s|/data|/host-data|" till.ini >host.ini
host/smallest-host host.ini "$1/lib/kvo/libKvo.so" 7770000000001
"$1/bin/loyalty-sim" check --database sim.db
[ "$("$1/bin/loyalty-sim" ledger --database sim.db | grep -c ' bound ')" = 2 ]
]=])
# Nothing of the build tree may be needed, and beside the system only a Log4Qt that has a prefix of its own.
if(LOG4QT)
    set(libraries "${LOG4QT}/../..")
endif()
execute_process(COMMAND env -i PATH=/usr/bin:/bin LANG=C.UTF-8 "LD_LIBRARY_PATH=${libraries}"
    sh "${WORK}/sell" "${prefix}" WORKING_DIRECTORY "${WORK}" COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE "${WORK}")
