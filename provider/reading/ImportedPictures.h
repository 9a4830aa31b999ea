// The pictures of a model in an interchange format: each file or piece of data becomes one picture of
// the model, under a name that no other picture has.
#pragma once

#include "provider/model/Model.h"

#include <map>
#include <span>
#include <string>

struct ImportedPictures {
    std::u16string Directory;                 // of the model file, with its closing separator
    std::map<std::u16string, uint32_t> Found; // pictures by what they were asked for
    std::vector<std::u16string> Names;        // of each picture of the model
    // The same names in lower case, each with the next number to append to it.
    std::map<std::u16string, uint32_t> NextNumbers;
};

// A picture file beside the model: where its name says, or, failing that, directly in the model's
// directory. The two operations give NoIndex, and add a remark to the model, when there is no picture
// that can be used.
uint32_t TakePictureFile(ImportedPictures& pictures, Model& model, const std::u16string& file);

// Picture data within the model. key tells it from all others; name may be empty.
uint32_t TakePictureBytes(ImportedPictures& pictures, Model& model, const std::u16string& key,
                          const std::u16string& name, std::vector<uint8_t> bytes);

// Texels within the model, as for MakePicture.
uint32_t TakeTexels(ImportedPictures& pictures, Model& model, const std::u16string& key,
                    const std::u16string& name, uint32_t width, uint32_t height,
                    std::span<const uint8_t> texels);

// Shows a picture on a material, unless it is NoIndex.
void ShowPicture(const ImportedPictures& pictures, uint32_t picture, ModelMaterial& material);
