# Building against an OpenPegasus installation instead of the in-tree SDK.
#
# ORV_PEGASUS_INCLUDE_DIR holds Pegasus/Common/Config.h: /usr/include for an
# installed SDK, $PEGASUS_ROOT/src for a source build. ORV_PEGASUS_LIBRARY_DIR
# holds libpegcommon.so, libpegprovider.so and libpegclient.so: /usr/lib64 (or
# /usr/lib) for an installed SDK, $PEGASUS_HOME/lib for a source build.
#
# Defines the target pegasus_sdk as those headers and libraries, so the module
# and the sibling stand-ins link against it exactly as against the in-tree SDK.

if(NOT ORV_PEGASUS_INCLUDE_DIR OR NOT ORV_PEGASUS_LIBRARY_DIR)
    message(FATAL_ERROR
        "Give both ORV_PEGASUS_INCLUDE_DIR and ORV_PEGASUS_LIBRARY_DIR to build against "
        "OpenPegasus (now: include '${ORV_PEGASUS_INCLUDE_DIR}', library '${ORV_PEGASUS_LIBRARY_DIR}').")
endif()
get_filename_component(ORV_PEGASUS_INCLUDE_DIR "${ORV_PEGASUS_INCLUDE_DIR}" ABSOLUTE)
get_filename_component(ORV_PEGASUS_LIBRARY_DIR "${ORV_PEGASUS_LIBRARY_DIR}" ABSOLUTE)

if(NOT EXISTS "${ORV_PEGASUS_INCLUDE_DIR}/Pegasus/Common/Config.h")
    message(FATAL_ERROR
        "ORV_PEGASUS_INCLUDE_DIR=${ORV_PEGASUS_INCLUDE_DIR} holds no Pegasus/Common/Config.h. "
        "Give the directory above Pegasus/: /usr/include for an installed SDK, "
        "$PEGASUS_ROOT/src for a source build.")
endif()
if(NOT EXISTS "${ORV_PEGASUS_INCLUDE_DIR}/Pegasus/Provider/CIMInstanceProvider.h")
    message(FATAL_ERROR
        "ORV_PEGASUS_INCLUDE_DIR=${ORV_PEGASUS_INCLUDE_DIR} has no provider interface headers "
        "(Pegasus/Provider/CIMInstanceProvider.h); install the OpenPegasus development files.")
endif()
if(NOT ORV_PEGASUS_PLATFORM MATCHES "^[A-Z0-9_]+$")
    message(FATAL_ERROR "ORV_PEGASUS_PLATFORM=${ORV_PEGASUS_PLATFORM} is not a platform name "
                        "such as LINUX_X86_64_GNU.")
endif()

set(ORV_PEGASUS_LIBRARIES)
foreach(lib pegcommon pegprovider pegclient)
    # Not cached: pointing the options elsewhere must look again.
    unset(ORV_PEGASUS_LIB_${lib})
    find_library(ORV_PEGASUS_LIB_${lib} NAMES ${lib} PATHS "${ORV_PEGASUS_LIBRARY_DIR}"
                 NO_DEFAULT_PATH NO_CACHE)
    if(NOT ORV_PEGASUS_LIB_${lib})
        message(FATAL_ERROR
            "ORV_PEGASUS_LIBRARY_DIR=${ORV_PEGASUS_LIBRARY_DIR} holds no lib${lib}.so. "
            "Give $PEGASUS_HOME/lib for a source build, or the directory of the installed "
            "libpeg*.so (usually /usr/lib64); an installed SDK needs its development package "
            "for the unversioned .so names.")
    endif()
    list(APPEND ORV_PEGASUS_LIBRARIES "${ORV_PEGASUS_LIB_${lib}}")
endforeach()

add_library(pegasus_sdk INTERFACE)
target_include_directories(pegasus_sdk SYSTEM INTERFACE "${ORV_PEGASUS_INCLUDE_DIR}")
target_compile_definitions(pegasus_sdk INTERFACE PEGASUS_PLATFORM_${ORV_PEGASUS_PLATFORM})
target_link_libraries(pegasus_sdk INTERFACE ${ORV_PEGASUS_LIBRARIES} Threads::Threads)

# The libraries are copied side by side into the server's provider directory,
# where each finds the others through its own location.
set(CMAKE_BUILD_RPATH "\$ORIGIN")
set(CMAKE_INSTALL_RPATH "\$ORIGIN")

message(STATUS "Building against OpenPegasus: ${ORV_PEGASUS_INCLUDE_DIR}, ${ORV_PEGASUS_LIBRARIES}, "
               "PEGASUS_PLATFORM_${ORV_PEGASUS_PLATFORM}")
