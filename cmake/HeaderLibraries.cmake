# Libraries that are headers alone, the same for every system that is built for. They are reached through a
# folder of links to just them: the whole of /usr/include must not come along when cross-building.
#
# json-headers  nlohmann/json.hpp
set(headerDir ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headerDir})

find_path(nlohmannDir nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${nlohmannDir}/nlohmann ${headerDir}/nlohmann SYMBOLIC)
add_library(json-headers INTERFACE)
target_include_directories(json-headers SYSTEM INTERFACE ${headerDir})
