// The model document: a model as a JSON file, described in docs/model-document.md.
#pragma once

#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"

#include <string>
#include <string_view>

// The key that makes a JSON text a model document; its value is the version.
constexpr std::string_view ModelDocumentKey = "orvaneModel";

// Fills an empty model. directory, with its closing separator, is where pictures are looked for. Gives
// false, and place and reason in error, when the document can't be used; the model is then unfinished.
bool ReadModelDocument(const JsonTape& json, const std::u16string& directory, Model& model,
                       std::string& error);
