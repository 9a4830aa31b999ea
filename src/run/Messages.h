// All texts that the program prints or logs. "%s" is replaced by a text, "%d" by a number.
#pragma once

#include <cinttypes>

// Standard output only, with its line end.
constexpr char16_t MessageUsage[] =
    u"Usage: orvane.exe <src_path> <dest_path> <rel_dest_dir> <log_path>\n";

// Standard error only, formats of printf with their line ends.
constexpr char MessageOutOfMemory[] = "orvane: out of memory\n";
constexpr char MessageListsTooDeep[] = // the limit, number of lists
    "orvane: groups and component instances skipped, nested more than %zu levels deep: %" PRIu64 "\n";
constexpr char MessageListsInsideThemselves[] = // number of lists
    "orvane: groups and component instances skipped, nested in themselves: %" PRIu64 "\n";

// Lines of the log, without their line ends.
constexpr char16_t MessageImporting[] = u"Importing %s to %s";  // source, scene file
constexpr char16_t MessageErrorOpening[] = u"Error opening %s"; // source
constexpr char16_t MessageErrorTextureWriter[] = u"Error creating texture writer";
constexpr char16_t MessageErrorReading[] = u"SKP Import failed - error reading file";
constexpr char16_t MessageWritingTexture[] = u"Writing: %s"; // texture file
constexpr char16_t MessageErrorTexture[] =
    u"Error: SKP library could not write %s to %s";                         // name, texture file
constexpr char16_t MessageErrorImporting[] = u"Error importing %s (rc=%d)"; // source, import status
constexpr char16_t MessageErrorWriting[] = u"Error writing %s";             // scene file
constexpr char16_t MessageSuccess[] = u"Success. %s imported to %s";        // source, scene file
