# One place for what every target shares: warnings, the include root, sanitizers.

option(SENTREL_WARNINGS_ARE_ERRORS "Stop at the first warning" ON)
add_library(sentrel_options INTERFACE)
target_compile_options(sentrel_options INTERFACE -Wall -Wextra -Wpedantic)
if(SENTREL_WARNINGS_ARE_ERRORS)
    target_compile_options(sentrel_options INTERFACE -Werror)
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC takes a source that another one includes for a header, where a type of an anonymous namespace would be a mistake.
    target_compile_options(sentrel_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX,OBJCXX>:-Wno-subobject-linkage>)
endif()
target_include_directories(sentrel_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
if(SENTREL_SANITIZE)
    target_compile_options(sentrel_options INTERFACE
        "-fsanitize=${SENTREL_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(sentrel_options INTERFACE "-fsanitize=${SENTREL_SANITIZE}")
endif()

# Compiling again what was compiled before costs next to nothing with ccache. A launcher that the caller names stays.
option(SENTREL_CCACHE "Compile through ccache where it is installed" ON)
find_program(SENTREL_CCACHE_PROGRAM ccache)
if(SENTREL_CCACHE AND SENTREL_CCACHE_PROGRAM)
    foreach(language IN ITEMS CXX OBJC OBJCXX)
        if(NOT CMAKE_${language}_COMPILER_LAUNCHER)
            set(CMAKE_${language}_COMPILER_LAUNCHER "${SENTREL_CCACHE_PROGRAM}")
        endif()
    endforeach()
endif()

# What has to be made before a source can be read: the headers that the build writes, not the configuration.
add_custom_target(generated_headers)

# sentrel_room(NAME SOURCES a.cpp ... DEPENDS lib ...): a static library for one room.
function(sentrel_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(${name} PUBLIC sentrel_options ${ROOM_DEPENDS})
endfunction()

# sentrel_program(NAME SOURCES a.cpp ... DEPENDS lib ...): an executable in build/<preset>/bin.
function(sentrel_program name)
    cmake_parse_arguments(PROGRAM "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${PROGRAM_SOURCES})
    target_link_libraries(${name} PRIVATE sentrel_options ${PROGRAM_DEPENDS})
endfunction()

# sentrel_precompile_json(TARGET [FROM]): with SENTREL_PRECOMPILE, reads the largest header of all once for the sources of TARGET,
# or uses what was read for FROM.
function(sentrel_precompile_json target)
    if(SENTREL_PRECOMPILE AND ARGC GREATER 1)
        target_precompile_headers(${target} REUSE_FROM ${ARGV1})
    elseif(SENTREL_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE <filesystem> <nlohmann/json.hpp>)
    endif()
endfunction()

# sentrel_embed_property_lists(TARGET INFO LAUNCHD): puts both files into the executable's sections __TEXT,__info_plist and
# __TEXT,__launchd_plist.
function(sentrel_embed_property_lists target info launchd)
    if(APPLE)
        target_link_options(${target} PRIVATE
            "LINKER:-sectcreate,__TEXT,__info_plist,${info}"
            "LINKER:-sectcreate,__TEXT,__launchd_plist,${launchd}")
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${info}" "${launchd}")
    else()
        set(EMBEDDED_INFO_PLIST "${info}")
        set(EMBEDDED_LAUNCHD_PLIST "${launchd}")
        set(source "${CMAKE_CURRENT_BINARY_DIR}/generated/${target}-EmbeddedPropertyLists.cpp")
        configure_file("${CMAKE_SOURCE_DIR}/src/Platform/Linux/EmbeddedPropertyLists.cpp.in" "${source}" @ONLY)
        set_source_files_properties("${source}" PROPERTIES OBJECT_DEPENDS "${info};${launchd}")
        target_sources(${target} PRIVATE "${source}")
    endif()
endfunction()

# sentrel_application(TARGET NAME BUNDLE INFO SOURCES a.cpp ... DEPENDS lib ... [LOCALIZATIONS folder] [ICONS file ...]
# [LIBRARIES target ...] [TOOLS target ...]): the program TARGET in the application bundle "NAME.app", in the layout that both systems share:
#   Contents/Info.plist                 from resources/INFO
#   Contents/MacOS                      the program
#   Contents/Library/LaunchServices     both helpers
#   Contents/Frameworks                 LIBRARIES, which the program loads itself
#   Contents/Helpers                    TOOLS, which people call; on Linux without what only a debugger reads
#   Contents/Resources                  the runtime support package, ICONS (the first is the bundle's own; the others are
#                                       what its interface shows), and the string tables *.lproj/*.strings in LOCALIZATIONS
# The target BUNDLE makes it whole.
function(sentrel_application target name bundle info)
    cmake_parse_arguments(APPLICATION "" "LOCALIZATIONS" "SOURCES;DEPENDS;LIBRARIES;TOOLS;ICONS" ${ARGN})
    set(contents "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}.app/Contents")
    sentrel_program(${target} SOURCES ${APPLICATION_SOURCES} DEPENDS ${APPLICATION_DEPENDS})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME "${name}" RUNTIME_OUTPUT_DIRECTORY "${contents}/MacOS")

    set(parts "")
    foreach(helper IN ITEMS com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper)
        sentrel_bundle_part(parts "${contents}/Library/LaunchServices/${helper}" "$<TARGET_FILE:${helper}>" ${helper})
    endforeach()
    foreach(library IN LISTS APPLICATION_LIBRARIES)
        sentrel_bundle_part(parts "${contents}/Frameworks/${library}.dylib" "$<TARGET_FILE:${library}>" ${library})
    endforeach()
    foreach(tool IN LISTS APPLICATION_TOOLS)
        sentrel_bundle_part(parts "${contents}/Helpers/${tool}" "$<TARGET_FILE:${tool}>" ${tool})
    endforeach()
    sentrel_bundle_part(parts "${contents}/Resources/SwiftRuntimeForCommandLineTools.pkg"
        "${SENTREL_RUNTIME_PACKAGE}" runtime_package "${SENTREL_RUNTIME_PACKAGE}")
    set(BUNDLE_ICON "")
    foreach(icon IN LISTS APPLICATION_ICONS)
        cmake_path(GET icon FILENAME file)
        sentrel_bundle_part(parts "${contents}/Resources/${file}" "${icon}" "${icon}")
        if(NOT BUNDLE_ICON)
            set(BUNDLE_ICON "${file}")
        endif()
    endforeach()
    set(BUNDLE_LOCALIZATIONS "")
    if(APPLICATION_LOCALIZATIONS)
        # The folders are what decides which languages the application has, so they are looked up instead of listed.
        file(GLOB tables CONFIGURE_DEPENDS RELATIVE "${APPLICATION_LOCALIZATIONS}"
            "${APPLICATION_LOCALIZATIONS}/*.lproj/*.strings")
        foreach(table IN LISTS tables)
            set(file "${APPLICATION_LOCALIZATIONS}/${table}")
            sentrel_bundle_part(parts "${contents}/Resources/${table}" "${file}" "${file}")
            string(REGEX REPLACE "\\.lproj/.*" "" language "${table}")
            list(APPEND BUNDLE_LOCALIZATIONS "\t\t<string>${language}</string>\n")
        endforeach()
        list(REMOVE_DUPLICATES BUNDLE_LOCALIZATIONS)
        list(JOIN BUNDLE_LOCALIZATIONS "" BUNDLE_LOCALIZATIONS)
    endif()
    sentrel_describe_architectures()
    configure_file("${CMAKE_SOURCE_DIR}/resources/${info}" "${contents}/Info.plist" @ONLY)
    add_custom_target(${bundle} ALL DEPENDS ${parts})
    add_dependencies(${bundle} ${target})
endfunction()

# sentrel_describe_architectures(): sets what a bundle's property list says about the processors that are built for.
#   BUNDLE_OLDEST_SYSTEMS   the earliest macOS for each, entries of a dictionary. Before macOS 11 there is none for Apple silicon;
#                           compiler and linker know that by themselves.
#   BUNDLE_ARCHITECTURES    all, the preferred one first, items of an array. On Apple silicon the application is translated, as the
#                           product is: its frameworks, which the window asks for the parental-control lock, are for Intel only.
macro(sentrel_describe_architectures)
    set(BUNDLE_OLDEST_SYSTEMS "")
    set(BUNDLE_ARCHITECTURES "")
    foreach(architecture IN LISTS CMAKE_OSX_ARCHITECTURES)
        set(oldest "${CMAKE_OSX_DEPLOYMENT_TARGET}")
        if(architecture STREQUAL "arm64" AND oldest VERSION_LESS 11.0)
            set(oldest "11.0")
        endif()
        string(APPEND BUNDLE_OLDEST_SYSTEMS "\t\t<key>${architecture}</key>\n\t\t<string>${oldest}</string>\n")
        string(APPEND BUNDLE_ARCHITECTURES "\t\t<string>${architecture}</string>\n")
    endforeach()
endmacro()

# sentrel_bundle_part(LIST OUTPUT FILE DEPENDENCY...): has FILE copied to OUTPUT, and appends OUTPUT to the variable LIST.
function(sentrel_bundle_part list output file)
    cmake_path(GET output PARENT_PATH folder)
    if(folder MATCHES "/Helpers$" AND CMAKE_SYSTEM_NAME STREQUAL "Linux")
        set(copy "${CMAKE_STRIP}" --strip-debug -o "${output}" "${file}")
    else()
        set(copy "${CMAKE_COMMAND}" -E copy "${file}" "${output}")
    endif()
    add_custom_command(OUTPUT "${output}"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
        COMMAND ${copy}
        DEPENDS ${ARGN}
        VERBATIM)
    set(${list} ${${list}} "${output}" PARENT_SCOPE)
endfunction()
