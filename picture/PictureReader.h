// Decodes picture files: PNG, JPEG, WebP, BMP and TGA. Callers that accept fewer formats check first.
#pragma once

#include "picture/DecodedPicture.h"

#include <span>
#include <string_view>

// The largest file, in bytes.
constexpr size_t LargestPictureFile = INT32_MAX;

// Decodes at most LargestPictureFile bytes to four channels, or to those of the file if channels is 0.
// A file of 16 bits per channel is reduced to the upper 8; a palette counts as red, green, blue and, if
// it has transparent colours, alpha; CMYK becomes red, green and blue. The orientation that EXIF data
// states is not applied, nor a colour profile or gamma value.
//
// Fills picture and returns nothing, or returns the fault. What the decoders only warn about is no
// fault, except missing data: a truncated file is Undecodable.
std::optional<PictureFault> DecodePicture(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture);

// Completes the sentence "the picture ...". formats: those that the caller accepts, as "PNG or JPEG".
std::string FaultWords(const PictureFault& fault, std::string_view formats);

// Whether a PNG file has chunks with correct checksums, the last of them IEND. The decoder accepts more,
// but a file that is copied unchanged must suit stricter readers.
bool IsSoundPng(std::span<const uint8_t> bytes);
