// The model formats in the core file-type registry: their records, the user's choices kept in
// the registry's configuration file, and the list --list-formats prints.
#pragma once

#include <cstdint>
#include <string>

class q5_GAPI;
class q5_STREAM;
struct FILETYPE;

// The kind byte of model formats in FILETYPE::flags.
inline constexpr std::uint32_t kModelFormatKind = 3;

// Registers every model format this build reads with the host's registry, OBJ and glTF first
// so that their extensions find them before the Assimp importers; once per host.
void RegisterModelFormats(q5_GAPI& host);

// The registry's configuration file of a host whose settings are kept in `settingsFile`.
std::string FormatChoicesFile(const std::string& settingsFile);
// Applies the enable choices and order of `file` when it exists; false with a reason when it
// exists but cannot be read.
bool LoadFormatChoices(q5_GAPI& host, const std::string& file, std::string& error);

// The format of a model file: by its extension when the content does not contradict it,
// otherwise by content. Null when no enabled model format fits.
FILETYPE* FindModelFormat(q5_STREAM& stream, const std::string& path);

// One line per registered model format: name, extensions, and "(disabled)" when it is off.
std::string ListModelFormats();

// What to install for the formats this build lacks; empty when it reads them all.
const char* MissingFormatsHint();
