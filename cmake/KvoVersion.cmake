# The version of everything in this tree. Included before project(), also by the host where it builds alone.
set(KVO_VERSION 0.1.0)
# With the commit where the tree is a checkout: what --version prints.
set(KVO_VERSION_TEXT ${KVO_VERSION})
if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/../.git") # and not a copy inside the checkout of something else
    execute_process(COMMAND git -C "${CMAKE_CURRENT_LIST_DIR}" rev-parse --short HEAD
        OUTPUT_VARIABLE kvo_commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(kvo_commit)
    string(APPEND KVO_VERSION_TEXT " (${kvo_commit})")
    # Every commit and every checkout adds to this log.
    execute_process(COMMAND git -C "${CMAKE_CURRENT_LIST_DIR}" rev-parse --git-path logs/HEAD
        OUTPUT_VARIABLE kvo_log OUTPUT_STRIP_TRAILING_WHITESPACE)
    cmake_path(ABSOLUTE_PATH kvo_log BASE_DIRECTORY "${CMAKE_CURRENT_LIST_DIR}")
    if(EXISTS "${kvo_log}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${kvo_log}")
    endif()
endif()
