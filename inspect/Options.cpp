// Parses the arguments in order. Each option may occur once.
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
    std::vector<std::u16string> Seen; // Options so far.
    std::u16string Wrong;
};

// The argument after an option.
std::u16string TakeValue(Parsing& parsing, const std::u16string& option) {
    if (parsing.At == parsing.Arguments.size() || parsing.Arguments[parsing.At].empty()) {
        parsing.Wrong = option + u" requires a value";
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
        parsing.Wrong = u"--size requires a width and a height from 1 to " + Number(LargestDrawingSide) +
                        u" pixels, such as 1280x800";
        return;
    }
    options.Width = width.value_or(options.Width);
    options.Height = height.value_or(options.Height);
}

void SetReport(Parsing& parsing, Report kind, Options& options) {
    if (options.Kind != Report::Summary) {
        parsing.Wrong = u"--tree, --json and --diff are mutually exclusive";
    }
    options.Kind = kind;
}

void TakeOption(Parsing& parsing, const std::u16string& option, Options& options) {
    if (std::find(parsing.Seen.begin(), parsing.Seen.end(), option) != parsing.Seen.end()) {
        parsing.Wrong = option + u" is given twice";
        return;
    }
    parsing.Seen.push_back(option);
    if (option == u"--help") {
        options.WantsHelp = true;
    } else if (option == u"--version") {
        options.WantsVersion = true;
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
    } else if (option == u"--html") {
        options.PageFile = TakeValue(parsing, option);
    } else if (option == u"--textures") {
        options.TextureDirectory = TakeValue(parsing, option);
    } else if (option == u"--size") {
        TakeSize(parsing, options);
    } else {
        parsing.Wrong = u"unknown option " + Quoted(option);
    }
}

// An output must not overwrite another file of the same call.
void CheckOutputs(Parsing& parsing, const Options& options) {
    const auto checkOverwrite = [&](const std::u16string& output, const std::u16string& file) {
        if (!output.empty() && !file.empty() && NameOneFile(output, file)) {
            parsing.Wrong = u"output " + Quoted(output) + u" would overwrite " + Quoted(file);
        }
    };
    for (const std::u16string& output : {options.GltfFile, options.PictureFile, options.PageFile}) {
        checkOverwrite(output, options.File);
        checkOverwrite(output, options.Other);
    }
    checkOverwrite(options.PictureFile, options.GltfFile);
    checkOverwrite(options.PageFile, options.GltfFile);
    checkOverwrite(options.PageFile, options.PictureFile);
}

void CheckTogether(Parsing& parsing, const Options& options) {
    const auto has = [&](const char16_t* option) {
        return std::find(parsing.Seen.begin(), parsing.Seen.end(), option) != parsing.Seen.end();
    };
    if (options.File.empty()) {
        parsing.Wrong = u"no scene file is given";
    } else if (has(u"--size") && !has(u"--png")) {
        parsing.Wrong = u"--size requires --png";
    } else if (has(u"--textures") && !has(u"--png") && !has(u"--glb") && !has(u"--html")) {
        parsing.Wrong = u"--textures requires --html, --glb or --png";
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
            parsing.Wrong = u"more than one scene file is given";
        }
    }
    if (parsing.Wrong.empty() && !options.WantsHelp && !options.WantsVersion) {
        CheckTogether(parsing, options);
    }
    return parsing.Wrong;
}

std::u16string UsageText() {
    return u"Usage: scene-inspect [OPTION ...] FILE\n"
           u"Checks a scene file to its last byte and prints a summary of its contents.\n"
           u"\n"
           u"Reports that replace the summary:\n"
           u"  --tree          prints the tree of nodes and meshes\n"
           u"  --json          prints the summary as JSON\n"
           u"  --diff OTHER    prints the number of differences from OTHER, and the first one\n"
           u"Outputs:\n"
           u"  --html OUT      writes a page that shows the scene in a browser\n"
           u"  --glb OUT       writes the scene as binary glTF 2.0\n"
           u"  --png OUT       writes a picture of the scene\n"
           u"  --size WxH      sets the size of that picture; the default is 1280x800\n"
           u"  --textures DIR  looks for the textures in DIR instead of beside FILE\n"
           u"Help:\n"
           u"  --help          prints this text\n"
           u"  --version       prints the name and the version of the program\n"
           u"\n"
           u"Exit codes: 0 sound, 1 not sound, 2 wrong usage, 3 --diff found a difference,\n"
           u"4 an output could not be written, or memory ran out.\n";
}

std::u16string VersionText() {
    return u"scene-inspect " ORVANE_VERSION u"\n";
}
