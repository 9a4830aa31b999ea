// The model document: a model as a JSON file, described in docs/model-document.md.
#pragma once

#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"

#include <string>
#include <string_view>

// The key that makes a JSON text a model document; its value is the version.
constexpr std::string_view ModelDocumentKey = "orvaneModel";

// Fills an empty model. Pictures are looked up in directory, which ends with a separator. Returns
// false, with place and reason in error, if the document can't be used; the model is then incomplete.
bool ReadModelDocument(const JsonTape& json, const std::u16string& directory, Model& model,
                       std::string& error);
