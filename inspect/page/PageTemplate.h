// The page without a scene, which the build makes from viewer/ and embeds.
#pragma once

#include <string_view>

// HTML with the mark PageDataMark once, where the scene goes. Empty in a build without the page.
extern const std::string_view PageTemplate;

constexpr std::string_view PageDataMark = "<!--SCENE-->";
