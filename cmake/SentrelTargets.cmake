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
