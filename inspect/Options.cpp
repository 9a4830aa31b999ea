// Takes the arguments one after the other; each option may stand once.
#include "inspect/Options.h"

#include "inspect/drawing/ScenePicture.h"
#include "inspect/stored/Wording.h"

#include "platform/Platform.h"

#include <algorithm>
#include <optional>

namespace {

struct Parsing {
    const std::vector<std::u16string>& Arguments;
    size_t At = 0;
    std::vector<std::u16string> Seen; // Options.
    std::u16string Wrong;
};

// The argument behind an option.
std::u16string TakeValue(Parsing& parsing, const std::u16string& option) {
    if (parsing.At == parsing.Arguments.size() || parsing.Arguments[parsing.At].empty()) {
        parsing.Wrong = option + u" needs a value";
        return u"";
    }
    return parsing.Arguments[parsing.At++];
}

std::optional<uint32_t> PictureSide(const std::u16string& digits) {
    uint32_t side = 0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9' || side > LargestDrawingSide) {
            return std::nullopt;
        }
        side = side * 10 + (digit - u'0');
    }
    return side > 0 && side <= LargestDrawingSide ? std::optional(side) : std::nullopt;
}

void TakeSize(Parsing& parsing, Options& options) {
    const std::u16string text = TakeValue(parsing, u"--size");
    const size_t by = std::min(text.find(u'x'), text.size());
    const auto width = PictureSide(text.substr(0, by));
    const auto height = PictureSide(text.substr(std::min(by + 1, text.size())));
    if (parsing.Wrong.empty() && (!width || !height)) {
        parsing.Wrong = u"--size needs a width and a height of 1 to " + Number(LargestDrawingSide) +
                        u" pixels, as in 1280x800";
        return;
    }
    options.Width = width.value_or(options.Width);
    options.Height = height.value_or(options.Height);
}

void SetReport(Parsing& parsing, Report kind, Options& options) {
    if (options.Kind != Report::Summary) {
        parsing.Wrong = u"--tree, --json and --diff exclude one another";
    }
    options.Kind = kind;
}

void TakeOption(Parsing& parsing, const std::u16string& option, Options& options) {
    if (std::find(parsing.Seen.begin(), parsing.Seen.end(), option) != parsing.Seen.end()) {
        parsing.Wrong = option + u" stands twice";
        return;
    }
    parsing.Seen.push_back(option);
    if (option == u"--help") {
        options.WantsHelp = true;
    } else if (option == u"--tree") {
        SetReport(parsing, Report::Tree, options);
    } else if (option == u"--json") {
        SetReport(parsing, Report::Json, options);
    } else if (option == u"--diff") {
        SetReport(parsing, Report::Differences, options);
        options.Other = TakeValue(parsing, option);
    } else if (option == u"--glb") {
        options.GltfFile = TakeValue(parsing, option);
    } else if (option == u"--png") {
        options.PictureFile = TakeValue(parsing, option);
    } else if (option == u"--textures") {
        options.TextureDirectory = TakeValue(parsing, option);
    } else if (option == u"--size") {
        TakeSize(parsing, options);
    } else {
        parsing.Wrong = u"there is no option " + Quoted(option);
    }
}

// An output in the place of another file of the call would destroy it.
void CheckOutputs(Parsing& parsing, const Options& options) {
    const auto isOutputOn = [&](const std::u16string& output, const std::u16string& file) {
        if (!output.empty() && !file.empty() && NameOneFile(output, file)) {
            parsing.Wrong = Quoted(output) + u" would be written over " + Quoted(file);
        }
    };
    for (const std::u16string& output : {options.GltfFile, options.PictureFile}) {
        isOutputOn(output, options.File);
        isOutputOn(output, options.Other);
    }
    isOutputOn(options.PictureFile, options.GltfFile);
}

void CheckTogether(Parsing& parsing, const Options& options) {
    const auto has = [&](const char16_t* option) {
        return std::find(parsing.Seen.begin(), parsing.Seen.end(), option) != parsing.Seen.end();
    };
    if (options.File.empty()) {
        parsing.Wrong = u"no scene file is named";
    } else if (has(u"--size") && !has(u"--png")) {
        parsing.Wrong = u"--size goes with --png";
    } else if (has(u"--textures") && !has(u"--png") && !has(u"--glb")) {
        parsing.Wrong = u"--textures goes with --png or --glb";
    } else {
        CheckOutputs(parsing, options);
    }
}

} // namespace

std::u16string ParseOptions(const std::vector<std::u16string>& arguments, Options& options) {
    Parsing parsing{arguments, 0, {}, u""};
    bool onlyFiles = false;
    while (parsing.At < arguments.size() && parsing.Wrong.empty()) {
        const std::u16string& argument = arguments[parsing.At++];
        if (!onlyFiles && argument == u"--") {
            onlyFiles = true;
        } else if (!onlyFiles && argument.starts_with(u"-")) {
            TakeOption(parsing, argument, options);
        } else if (options.File.empty()) {
            options.File = argument;
        } else {
            parsing.Wrong = u"more than one scene file is named";
        }
    }
    if (parsing.Wrong.empty() && !options.WantsHelp) {
        CheckTogether(parsing, options);
    }
    return parsing.Wrong;
}

std::u16string UsageText() {
    return u"Usage: scene-inspect [OPTION ...] FILE\n"
           u"Checks a scene file to the last byte and tells what is in it.\n"
           u"\n"
           u"In place of the summary:\n"
           u"  --tree          the node tree\n"
           u"  --json          the summary as JSON\n"
           u"  --diff OTHER    the first and the number of differences from another scene file\n"
           u"Besides:\n"
           u"  --glb OUT       writes the scene as binary glTF 2.0\n"
           u"  --png OUT       writes a picture of the scene\n"
           u"  --size WxH      the size of that picture, 1280x800 unless given\n"
           u"  --textures DIR  where the texture files are, if not beside FILE\n"
           u"\n"
           u"Exit codes: 0 sound, 1 not sound, 2 wrong use, 3 --diff found a difference,\n"
           u"4 an output could not be written, or memory ran out.\n";
}
