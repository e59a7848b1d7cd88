# nlohmann json, as the target korva_json. It is headers only, so one package serves every target system; a cross
# build sees them in a folder of their own, since the system's other headers are not for it.
find_path(KORVA_JSON_INCLUDE nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
add_library(korva_json INTERFACE)
if(CMAKE_CROSSCOMPILING)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/headers)
    file(CREATE_LINK ${KORVA_JSON_INCLUDE}/nlohmann ${PROJECT_BINARY_DIR}/headers/nlohmann SYMBOLIC)
    target_include_directories(korva_json SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/headers)
else()
    target_include_directories(korva_json SYSTEM INTERFACE ${KORVA_JSON_INCLUDE})
endif()
