// Evaluates arbitrary signature descriptions against arbitrary content, directly and through a
// detection over a stream, which must read no more than its bounded prefix.
#include "core/filetype/file_type.h"
#include "core/filetype/format_detect.h"
#include "core/stream/stream.h"
#include "support/recording_host.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The description runs to the first zero byte; the content is the rest.
    std::size_t cut = 0;
    while (cut < size && data[cut] != 0) ++cut;
    const std::string description(reinterpret_cast<const char*>(data), cut);
    std::vector<std::uint8_t> content(data + std::min(cut + 1, size), data + size);
    const auto streamSize = static_cast<std::int64_t>(content.size());

    const bool direct =
        q5MatchSignature(description.c_str(), content.data(), content.size(), streamSize);

    RecordingHost host;
    ScopedHostAPI scope(&host);
    FILETYPE* type = host.RegisterType(u"fz", u"Fuzzed", 0, 0x402, q5_GUID{1, 0, 0, {}});
    type->signature = description.c_str();
    q5_STREAM* stream =
        content.empty() ? nullptr : q5_STREAM::CreateFromMemory(content.data(), streamSize);
    FTINFO info;
    info.options = kFtContent;
    FILETYPE* found = q5GetFileFormat(stream, nullptr, &info);
    // Detection sees the same bytes whenever the content fits in its prefix.
    if (stream != nullptr && content.size() <= kDetectPrefixBytes && (found == type) != direct)
        std::abort();
    if (stream != nullptr) stream->Release();
    return 0;
}
