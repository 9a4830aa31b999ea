// The decoders of single formats, and what they share. Each takes the file and the channels as
// DecodePicture does, checks the size that the file states before it allocates anything of that size,
// and passes on the words of its library.
#pragma once

#include "picture/DecodedPicture.h"

#include <span>

std::optional<PictureFault> DecodeJpeg(std::span<const uint8_t> bytes, uint32_t channels,
                                       DecodedPicture& picture);
std::optional<PictureFault> DecodePng(std::span<const uint8_t> bytes, uint32_t channels,
                                      DecodedPicture& picture);
std::optional<PictureFault> DecodeWebp(std::span<const uint8_t> bytes, uint32_t channels,
                                       DecodedPicture& picture);
std::optional<PictureFault> DecodeBmpOrTga(std::span<const uint8_t> bytes, uint32_t channels,
                                           DecodedPicture& picture);

// The reason for files that end before their data does, where the library has no words for it.
constexpr const char* PrematureEnd = "premature end of the file";
