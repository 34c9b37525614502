# Builds for macOS on another system. Used by scripts/check-macos.sh, which sets SENTREL_CHECK_ROOT:
#   with an SDK     a folder laid out like a Mac's root (usr/, System/Library/Frameworks/); everything compiles and links for the Mac;
#   without one     empty; the same sources are compiled for this system, against GNUstep and the declarations in include/.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 17.0.0)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SENTREL_CHECK_ROOT SENTREL_CHECK_LLVM
    SENTREL_CHECK_FLAGS SENTREL_CHECK_OBJC_FLAGS)

set(CMAKE_AR "${SENTREL_CHECK_LLVM}/llvm-ar")
set(CMAKE_RANLIB "${SENTREL_CHECK_LLVM}/llvm-ranlib")
set(CMAKE_INSTALL_NAME_TOOL "${SENTREL_CHECK_LLVM}/llvm-install-name-tool")
foreach(language IN ITEMS C OBJC)
    set(CMAKE_${language}_COMPILER "${SENTREL_CHECK_LLVM}/clang")
endforeach()
foreach(language IN ITEMS CXX OBJCXX)
    set(CMAKE_${language}_COMPILER "${SENTREL_CHECK_LLVM}/clang++")
endforeach()
foreach(language IN ITEMS C CXX OBJC OBJCXX)
    # The programs are what is checked; that the compiler works shows there.
    set(CMAKE_${language}_COMPILER_WORKS TRUE)
    set(CMAKE_${language}_FLAGS_INIT "${SENTREL_CHECK_FLAGS}")
endforeach()
foreach(language IN ITEMS OBJC OBJCXX)
    string(APPEND CMAKE_${language}_FLAGS_INIT " ${SENTREL_CHECK_OBJC_FLAGS}")
endforeach()
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

if(SENTREL_CHECK_ROOT)
    set(CMAKE_OSX_SYSROOT "${SENTREL_CHECK_ROOT}")
    # The system to build for is said once, by CMAKE_OSX_DEPLOYMENT_TARGET, and so are the processors, by CMAKE_OSX_ARCHITECTURES.
    foreach(language IN ITEMS C CXX OBJC OBJCXX)
        set(CMAKE_${language}_COMPILER_TARGET x86_64-apple-macosx)
        # Apple's ar takes objects for several processors, this system's does not.
        set(CMAKE_${language}_CREATE_STATIC_LIBRARY "\"${SENTREL_CHECK_LLVM}/llvm-libtool-darwin\" -static -o <TARGET> <OBJECTS>")
    endforeach()
    foreach(language IN ITEMS CXX OBJCXX)
        # The C++ library of the SDK, not one that lies beside the compiler: its headers know what each macOS has.
        string(APPEND CMAKE_${language}_FLAGS_INIT
            " -stdlib=libc++ -stdlib++-isystem \"${SENTREL_CHECK_ROOT}/usr/include/c++/v1\"")
    endforeach()
    foreach(kind IN ITEMS EXE SHARED MODULE)
        set(CMAKE_${kind}_LINKER_FLAGS_INIT "--ld-path=\"${SENTREL_CHECK_LLVM}/ld64.lld\" -mlinker-version=705 -Wl,--error-limit=0")
    endforeach()
endif()

set(CMAKE_FIND_ROOT_PATH "${SENTREL_CHECK_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
