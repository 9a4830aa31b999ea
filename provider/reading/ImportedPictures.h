// The pictures of a model in an interchange format: each file or piece of data becomes one picture of
// the model, with a unique name.
#pragma once

#include "provider/model/Model.h"

#include <map>
#include <span>
#include <string>

struct ImportedPictures {
    std::u16string Directory;                 // of the model file; ends with a separator
    std::map<std::u16string, uint32_t> Found; // pictures by key; NoIndex if unusable
    std::vector<std::u16string> Names;        // of each picture of the model
    // The same names in lower case, each with the next number to append to it.
    std::map<std::u16string, uint32_t> NextNumbers;
};

// A picture file: at its path or, failing that, directly in the model's directory. This operation and
// the next two return NoIndex, and add a remark to the model, if the picture can't be used.
uint32_t TakePictureFile(ImportedPictures& pictures, Model& model, const std::u16string& file);

// Picture data embedded in the model. key identifies it; name may be empty.
uint32_t TakePictureBytes(ImportedPictures& pictures, Model& model, const std::u16string& key,
                          const std::u16string& name, std::vector<uint8_t> bytes);

// Texels embedded in the model, as for MakePicture.
uint32_t TakeTexels(ImportedPictures& pictures, Model& model, const std::u16string& key,
                    const std::u16string& name, uint32_t width, uint32_t height,
                    std::span<const uint8_t> texels);

// Sets the picture of a material, unless it is NoIndex.
void ShowPicture(const ImportedPictures& pictures, uint32_t picture, ModelMaterial& material);
