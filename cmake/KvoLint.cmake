# The target "lint" of the preset "lint": the format of all sources, then clang-tidy and cppcheck over all that is
# shipped. Nothing is compiled. Sources are read in batches, so that Qt's headers are read once per batch and not once
# per file.
find_program(KVO_CLANG_FORMAT clang-format REQUIRED)
find_program(KVO_RUN_CLANG_TIDY run-clang-tidy REQUIRED)
find_program(KVO_CPPCHECK cppcheck REQUIRED)

file(GLOB_RECURSE all_sources CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
    bench/*.cpp bench/*.h client/*.cpp client/*.h host/*.cpp host/*.h metatypes/*.cpp metatypes/*.h plugin/*.cpp plugin/*.h
    simulator/*.cpp simulator/*.h till/*.cpp till/*.h tests/*.cpp tests/*.h)
include(ProcessorCount)
ProcessorCount(processors)

add_custom_target(lint
    COMMAND "${KVO_CLANG_FORMAT}" --dry-run -Werror ${all_sources}
    COMMAND "${CMAKE_COMMAND}" -E echo "clang-format has nothing to say"
    # The commands are those of g++: clang does not know all of its warnings. Moc's output is not ours.
    COMMAND "${KVO_RUN_CLANG_TIDY}" -quiet -p "${CMAKE_BINARY_DIR}" -j ${processors}
        -extra-arg=-Wno-unknown-warning-option "^(?!.*mocs_compilation|.*_autogen|.*qrc_)"
    COMMAND "${CMAKE_COMMAND}" -E echo "clang-tidy has nothing to say"
    COMMAND "${KVO_CPPCHECK}" --quiet -j ${processors} --std=c++20 --language=c++
        --enable=warning,performance,portability --library=qt "-DQ_DISABLE_COPY_MOVE(x)=" -I . -I host -I host/log
        --inline-suppr "--suppressions-list=${PROJECT_SOURCE_DIR}/cmake/cppcheck.txt" --error-exitcode=1
        client host metatypes plugin simulator till
    COMMAND "${CMAKE_COMMAND}" -E echo "cppcheck has nothing to say"
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMAND_EXPAND_LISTS VERBATIM)
