# What every target of this tree is compiled with: the language level, warnings as errors, strict Qt, sanitizers.
# Targets link Kvo::options privately; nothing of it reaches a consumer.
include_guard(GLOBAL)

set(KVO_SANITIZE "" CACHE STRING "Sanitizers to build with: 'address,undefined', 'thread', with ',fuzzer-no-link' for fuzzers, or empty")

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

# One folder for programs and libraries, so that a till finds the plugin and the libraries beside it in a build tree.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

add_library(kvo_options INTERFACE)
add_library(Kvo::options ALIAS kvo_options)
target_compile_features(kvo_options INTERFACE cxx_std_20)
target_compile_options(kvo_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual -Wnull-dereference -Wformat=2
    # g++ 12 takes text + std::string for overlapping copies once it optimises as for a release.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_compile_definitions(kvo_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH QT_STRICT_ITERATORS
    QT_NO_KEYWORDS)
# A missing symbol shows when a program starts or the plugin is loaded, not in the middle of a sale.
target_link_options(kvo_options INTERFACE "LINKER:-z,relro,-z,now,-z,noexecstack")
if(KVO_SANITIZE)
    # Null-dereference analysis reports false positives in instrumented code.
    target_compile_options(kvo_options INTERFACE
        -fsanitize=${KVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -Wno-null-dereference
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(kvo_options INTERFACE -fsanitize=${KVO_SANITIZE})
else()
    # scripts/check-hardening reads the installed files for these. Fortified functions need optimisation.
    set(hardened "$<AND:$<CONFIG:Release,RelWithDebInfo,MinSizeRel>,$<NOT:$<BOOL:$<TARGET_PROPERTY:KVO_UNOPTIMISED>>>>")
    target_compile_options(kvo_options INTERFACE "$<${hardened}:-fstack-protector-strong>")
    check_cxx_compiler_flag(-fcf-protection KVO_HAS_CF_PROTECTION) # x86 only
    if(KVO_HAS_CF_PROTECTION)
        target_compile_options(kvo_options INTERFACE "$<${hardened}:-fcf-protection>")
    endif()
    target_compile_definitions(kvo_options INTERFACE "$<${hardened}:_FORTIFY_SOURCE=2>")
endif()
