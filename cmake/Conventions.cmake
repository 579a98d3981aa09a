# What every target of the project shares: language level, warnings, sanitizers, output folders.

option(SIGNALSCOPE_WERROR "Treat compiler warnings as errors" OFF)
option(SIGNALSCOPE_BENCHMARKS "Build the benchmarks (needs Google Benchmark)" OFF)
option(SIGNALSCOPE_FUZZ "Build the libFuzzer targets (needs clang)" OFF)
set(SIGNALSCOPE_SANITIZE "" CACHE STRING "Sanitizers for the whole build, e.g. address,undefined")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC OFF) # which Qt would switch on

# Built programs stand as they will be installed, so that the relative paths between the
# analyzer and its sibling programs hold in the build tree as well.
set(SIGNALSCOPE_STAGE "${CMAKE_BINARY_DIR}/stage")
set(SIGNALSCOPE_BIN_DIR "${SIGNALSCOPE_STAGE}/SignalScope/bin")
set(SIGNALSCOPE_BURNER_DIR "${SIGNALSCOPE_STAGE}/Burner/bin")

add_library(keo_warnings INTERFACE)
add_library(keo::warnings ALIAS keo_warnings)
if(MSVC)
    target_compile_options(keo_warnings INTERFACE /W4 $<$<BOOL:${SIGNALSCOPE_WERROR}>:/WX>)
else()
    target_compile_options(keo_warnings INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
        $<$<BOOL:${SIGNALSCOPE_WERROR}>:-Werror>)
endif()
# No "signals", "slots" and "emit" macros: the records have fields called signals, so the code says
# Q_SIGNALS, Q_SLOTS and Q_EMIT.
target_compile_definitions(keo_warnings INTERFACE QT_NO_FOREACH QT_NO_KEYWORDS
                           QT_NO_URL_CAST_FROM_STRING)

if(SIGNALSCOPE_SANITIZE)
    # Reports name functions and lines; what a debugger needs besides is a quarter of the compiling.
    add_compile_options(-fsanitize=${SIGNALSCOPE_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all -O1 -g1)
    add_link_options(-fsanitize=${SIGNALSCOPE_SANITIZE})
endif()
# Links three times as fast as the default, and comes with it in Debian.
include(CheckLinkerFlag)
check_linker_flag(CXX -fuse-ld=gold SIGNALSCOPE_HAS_GOLD)
if(SIGNALSCOPE_HAS_GOLD AND NOT SIGNALSCOPE_SANITIZE)
    add_link_options(-fuse-ld=gold)
endif()
if(SIGNALSCOPE_FUZZ)
    # Coverage everywhere, the fuzzing main only in the fuzz targets themselves.
    add_compile_options(-fsanitize=fuzzer-no-link)
    add_link_options(-fsanitize=fuzzer-no-link)
endif()

# keo_has_moc_macro(RESULT FILE...): whether one of the files needs moc. A pass over a target costs
# as much as to compile a small source, and half of the targets have nothing for it. Looked up when
# CMake runs, so the first Q_OBJECT of a folder needs a run by hand if no file comes with it.
function(keo_has_moc_macro result)
    set(${result} OFF PARENT_SCOPE)
    foreach(file IN LISTS ARGN)
        file(STRINGS ${file} found REGEX "Q_(OBJECT|GADGET|NAMESPACE)" LIMIT_COUNT 1)
        if(found)
            set(${result} ON PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

# One static library of a subsystem, in a folder of its own below src/:
#   keo_add_library(config PUBLIC a.h SOURCES a.cpp b.cpp b.h LINK keo::base Qt6::Core)
# gives keo_config and the alias keo::config. LINK is what the folder may know and hands on, HIDES
# what it may know and keeps to itself. Others reach the PUBLIC headers alone, as <config/a.h>: a
# folder of forwarding headers stands in for the real one on their include path. Tests and
# benchmarks may look inside, with keo::insides.
function(keo_add_library name)
    cmake_parse_arguments(ARG "" "" "PUBLIC;SOURCES;LINK;HIDES" ${ARGN})
    add_library(keo_${name} STATIC ${ARG_SOURCES} ${ARG_PUBLIC})
    add_library(keo::${name} ALIAS keo_${name})
    set(doors ${PROJECT_BINARY_DIR}/include/${name})
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR}/src ${CMAKE_CURRENT_SOURCE_DIR})
    foreach(header IN LISTS ARG_PUBLIC)
        file(RELATIVE_PATH target ${doors}/${folder} ${CMAKE_CURRENT_SOURCE_DIR}/${header})
        file(CONFIGURE OUTPUT ${doors}/${folder}/${header} CONTENT "#include \"${target}\"\n")
    endforeach()
    target_include_directories(keo_${name} INTERFACE ${doors})
    target_link_libraries(keo_${name} PUBLIC ${ARG_LINK} PRIVATE ${ARG_HIDES} keo::warnings)
    keo_has_moc_macro(moc ${ARG_SOURCES} ${ARG_PUBLIC})
    set_target_properties(keo_${name} PROPERTIES AUTOMOC ${moc})
    keo_knows_windows(windows ${ARG_LINK} ${ARG_HIDES})
    if(windows)
        target_precompile_headers(keo_${name} REUSE_FROM keo_window_headers)
    else()
        target_precompile_headers(keo_${name} REUSE_FROM keo_plain_headers)
    endif()
endfunction()

add_library(keo_insides INTERFACE)
add_library(keo::insides ALIAS keo_insides)
target_include_directories(keo_insides INTERFACE ${PROJECT_SOURCE_DIR}/src)
