# GNUstep, which provides Foundation and AppKit where the system does not: the targets GNUstepBase and GNUstepGui for
# Objective-C and Objective-C++ sources, and GNUSTEP_FLAGS for those that another compiler has to take. Its headers are the
# system's: nothing of them is held against our warnings.

find_program(GNUSTEP_CONFIG gnustep-config)
if(NOT GNUSTEP_CONFIG)
    message(FATAL_ERROR "gnustep-config is missing; the window and the conformance tests need GNUstep. Run scripts/setup.sh.")
endif()

# sentrel_ask_gnustep(VARIABLE QUESTION): the words that gnustep-config answers.
function(sentrel_ask_gnustep variable question)
    execute_process(COMMAND ${GNUSTEP_CONFIG} ${question} OUTPUT_VARIABLE words
                    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT words)
        message(FATAL_ERROR "gnustep-config says nothing about ${question}; it needs make. Run scripts/setup.sh.")
    endif()
    separate_arguments(words UNIX_COMMAND "${words}")
    set(${variable} ${words} PARENT_SCOPE)
endfunction()

# sentrel_gnustep_target(TARGET QUESTION): TARGET uses the libraries of that question.
function(sentrel_gnustep_target target question)
    sentrel_ask_gnustep(libraries ${question})
    list(REMOVE_ITEM libraries -rdynamic)
    add_library(${target} INTERFACE)
    # CMake knows no standards of GCC's Objective-C.
    target_compile_options(${target} INTERFACE
        "$<$<COMPILE_LANGUAGE:OBJC,OBJCXX>:${GNUSTEP_FLAGS}>"
        $<$<COMPILE_LANGUAGE:OBJC>:-std=gnu11> $<$<COMPILE_LANGUAGE:OBJCXX>:-std=c++20>)
    target_link_libraries(${target} INTERFACE ${libraries})
endfunction()

sentrel_ask_gnustep(GNUSTEP_FLAGS --objc-flags)
# Dependency files, optimisation and warnings are CMake's business.
list(REMOVE_ITEM GNUSTEP_FLAGS -MMD -MP -g -O2 -Wall -I.)
list(TRANSFORM GNUSTEP_FLAGS REPLACE "^-I" "-isystem")

sentrel_gnustep_target(GNUstepBase --base-libs)
sentrel_gnustep_target(GNUstepGui --gui-libs)

# sentrel_gnustep_framework(TARGET FOLDER [CLASS]): makes the module TARGET a framework in FOLDER, in the layout that GNUstep
# loads from: a library of the framework's own name, which its property list names, in versions of which one is current.
function(sentrel_gnustep_framework target folder)
    get_target_property(name ${target} OUTPUT_NAME)
    if(NOT name)
        set(name ${target})
    endif()
    set(framework "${folder}/${name}.framework")
    set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX "" LIBRARY_OUTPUT_DIRECTORY "${framework}/Versions/A")
    set(main_class "")
    if(ARGC GREATER 2)
        set(main_class " NSPrincipalClass = \"${ARGV2}\";")
    endif()
    file(CONFIGURE OUTPUT "${framework}/Versions/A/Resources/Info-gnustep.plist"
         CONTENT "{ NSExecutable = \"${name}\";${main_class} }\n")
    file(CREATE_LINK A "${framework}/Versions/Current" SYMBOLIC)
    foreach(item IN ITEMS ${name} Resources)
        file(CREATE_LINK Versions/Current/${item} "${framework}/${item}" SYMBOLIC)
    endforeach()
endfunction()
