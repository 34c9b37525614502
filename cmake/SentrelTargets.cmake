# One place for what every target shares: warnings, the include root, sanitizers.

add_library(sentrel_options INTERFACE)
target_compile_options(sentrel_options INTERFACE -Wall -Wextra -Wpedantic -Werror)
target_include_directories(sentrel_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
if(SENTREL_SANITIZE)
    target_compile_options(sentrel_options INTERFACE
        "-fsanitize=${SENTREL_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(sentrel_options INTERFACE "-fsanitize=${SENTREL_SANITIZE}")
endif()

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

# sentrel_embed_property_lists(TARGET INFO LAUNCHD): puts both files into the executable's sections __TEXT,__info_plist and
# __TEXT,__launchd_plist.
function(sentrel_embed_property_lists target info launchd)
    if(APPLE)
        target_link_options(${target} PRIVATE
            "LINKER:-sectcreate,__TEXT,__info_plist,${info}"
            "LINKER:-sectcreate,__TEXT,__launchd_plist,${launchd}")
    else()
        set(EMBEDDED_INFO_PLIST "${info}")
        set(EMBEDDED_LAUNCHD_PLIST "${launchd}")
        set(source "${CMAKE_CURRENT_BINARY_DIR}/generated/${target}-EmbeddedPropertyLists.cpp")
        configure_file("${CMAKE_SOURCE_DIR}/src/Platform/Linux/EmbeddedPropertyLists.cpp.in" "${source}" @ONLY)
        set_source_files_properties("${source}" PROPERTIES OBJECT_DEPENDS "${info};${launchd}")
        target_sources(${target} PRIVATE "${source}")
    endif()
endfunction()

# sentrel_application(TARGET NAME BUNDLE INFO SOURCES a.cpp ... DEPENDS lib ...): the program TARGET in the application bundle
# "NAME.app", in the layout that both systems share, with the information property list from resources/INFO, both helpers and
# the runtime support package. The target BUNDLE makes it whole.
function(sentrel_application target name bundle info)
    set(contents "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}.app/Contents")
    sentrel_program(${target} ${ARGN})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME "${name}" RUNTIME_OUTPUT_DIRECTORY "${contents}/MacOS")
    configure_file("${CMAKE_SOURCE_DIR}/resources/${info}" "${contents}/Info.plist" @ONLY)

    set(parts "")
    foreach(helper IN ITEMS com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper)
        set(part "${contents}/Library/LaunchServices/${helper}")
        add_custom_command(OUTPUT "${part}"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${contents}/Library/LaunchServices"
            COMMAND "${CMAKE_COMMAND}" -E copy "$<TARGET_FILE:${helper}>" "${part}"
            DEPENDS ${helper}
            VERBATIM)
        list(APPEND parts "${part}")
    endforeach()
    set(part "${contents}/Resources/SwiftRuntimeForCommandLineTools.pkg")
    add_custom_command(OUTPUT "${part}"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${contents}/Resources"
        COMMAND "${CMAKE_COMMAND}" -E copy "${SENTREL_RUNTIME_PACKAGE}" "${part}"
        DEPENDS runtime_package "${SENTREL_RUNTIME_PACKAGE}"
        VERBATIM)
    add_custom_target(${bundle} ALL DEPENDS ${parts} "${part}")
    add_dependencies(${bundle} ${target})
endfunction()
