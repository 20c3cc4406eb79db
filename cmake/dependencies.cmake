# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The supplicant client library and liblog, from Debian's libwpa-client-dev and
# android-liblog-dev (for the host, or for arm64 from the multiarch sysroot).

if(CMAKE_LIBRARY_ARCHITECTURE)
    set(_tesmir_multiarch "${CMAKE_LIBRARY_ARCHITECTURE}")
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64|arm64")
    set(_tesmir_multiarch "aarch64-linux-gnu")
else()
    set(_tesmir_multiarch "x86_64-linux-gnu")
endif()

find_path(TESMIR_WPA_CTRL_INCLUDE wpa_ctrl.h PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
find_library(TESMIR_WPA_CLIENT_LIB libwpa_client.a
    PATHS /usr/lib/${_tesmir_multiarch} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
find_path(TESMIR_LIBLOG_INCLUDE android/log.h PATHS /usr/include/android NO_CMAKE_FIND_ROOT_PATH)
find_library(TESMIR_LIBLOG_LIB log
    PATHS /usr/lib/${_tesmir_multiarch}/android NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)

foreach(_var TESMIR_WPA_CTRL_INCLUDE TESMIR_WPA_CLIENT_LIB TESMIR_LIBLOG_INCLUDE TESMIR_LIBLOG_LIB)
    if(NOT ${_var})
        message(FATAL_ERROR "${_var} not found for ${_tesmir_multiarch} (Debian: libwpa-client-dev "
                            "android-liblog-dev). Run scripts/install-deps.sh.")
    endif()
endforeach()

add_library(tesmir::wpa_ctrl_headers INTERFACE IMPORTED)
set_target_properties(tesmir::wpa_ctrl_headers PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${TESMIR_WPA_CTRL_INCLUDE}")

add_library(tesmir::liblog_headers INTERFACE IMPORTED)
set_target_properties(tesmir::liblog_headers PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${TESMIR_LIBLOG_INCLUDE}")

add_library(tesmir::wpa_client STATIC IMPORTED)
set_target_properties(tesmir::wpa_client PROPERTIES
    IMPORTED_LOCATION "${TESMIR_WPA_CLIENT_LIB}"
    INTERFACE_INCLUDE_DIRECTORIES "${TESMIR_WPA_CTRL_INCLUDE}")

add_library(tesmir::liblog SHARED IMPORTED)
set_target_properties(tesmir::liblog PROPERTIES
    IMPORTED_LOCATION "${TESMIR_LIBLOG_LIB}"
    INTERFACE_INCLUDE_DIRECTORIES "${TESMIR_LIBLOG_INCLUDE}")
