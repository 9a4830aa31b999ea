// Reads the records of a glTF document.
#pragma once

#include "provider/gltf/records/GltfRecords.h"
#include "provider/reading/JsonTape.h"

// Fills empty records. Returns false, with place and reason in error, if a required member is missing or
// has another type.
bool ReadGltfRecords(const JsonTape& json, GltfRecords& records, std::string& error);
