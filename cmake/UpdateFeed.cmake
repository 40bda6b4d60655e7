# Where this build looks for newer versions of itself, if anywhere. Run as a script it only checks:
#   cmake -DVOSTEL_UPDATE_FEED=... -DVOSTEL_UPDATE_KEY=... -P cmake/UpdateFeed.cmake
set(VOSTEL_UPDATE_FEED "" CACHE STRING "HTTPS address of the feed that names newer versions; empty: none")
set(VOSTEL_UPDATE_KEY "" CACHE STRING
    "Ed25519 public key (base64) of the releases; with one, releases without a signature are not offered")

if(NOT VOSTEL_UPDATE_FEED STREQUAL "" AND
   NOT VOSTEL_UPDATE_FEED MATCHES "^https://[A-Za-z0-9.-]+(:[0-9]+)?(/[A-Za-z0-9._~%/?&=+,@:-]*)?$")
    message(FATAL_ERROR "VOSTEL_UPDATE_FEED must be an HTTPS address (https://...), not \"${VOSTEL_UPDATE_FEED}\"")
endif()
string(LENGTH "${VOSTEL_UPDATE_KEY}" length)
if(NOT VOSTEL_UPDATE_KEY STREQUAL "" AND
   NOT (length EQUAL 44 AND VOSTEL_UPDATE_KEY MATCHES "^[A-Za-z0-9+/]+=$"))
    message(FATAL_ERROR "VOSTEL_UPDATE_KEY must be the base64 text of a 32-byte Ed25519 public key")
endif()
if(NOT VOSTEL_UPDATE_KEY STREQUAL "" AND VOSTEL_UPDATE_FEED STREQUAL "")
    message(FATAL_ERROR "VOSTEL_UPDATE_KEY without VOSTEL_UPDATE_FEED")
endif()
