// The file-type configuration a host writes, as text, and whether it wrote any entry.
#pragma once

#include <string>
#include <utility>

#include "core/stream/mem_stream.h"
#include "interface/gapi.h"

inline std::pair<std::string, bool> SaveFiletypeConfigText(q5_GAPI& host) {
    Q5_MEMSTREAM* stream = Q5_MEMSTREAM::Growable(true);
    const bool wrote = host.SaveFiletypeConfig(stream);
    std::string text(static_cast<std::size_t>(stream->GetSize()), '\0');
    stream->Seek(0, 0);
    stream->Read(text.data(), static_cast<std::int64_t>(text.size()));
    stream->Release();
    return {text, wrote};
}
