// Reads arbitrary bytes as a file-type configuration. The registry must keep exactly its
// records, and what is then written must read back to the same state.
#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "support/fake_plugin_record.h"
#include "support/recording_host.h"
#include "support/saved_config.h"

#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace {

std::string Saved(RecordingHost& host) {
    return SaveFiletypeConfigText(host).first;
}

void Load(RecordingHost& host, std::string text) {
    if (text.empty()) return;
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(text.data(), static_cast<std::int64_t>(text.size()));
    host.LoadFiletypeConfig(stream);
    stream->Release();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    FakePluginRecord one(u"One", u"one"), two(u"Two", u"two");
    host.pluginList = {&one, &two};
    // Small identifiers, so that inputs can name them: {0000000n-0000-0000-0000-000000000000}.
    std::set<FILETYPE*> registered;
    for (std::uint32_t n = 1; n <= 4; ++n)
        registered.insert(
            host.RegisterType(u"x", n % 2 != 0 ? u"Odd" : u"Even", 0, 2, q5_GUID{n, 0, 0, {}}));

    Load(host, std::string(reinterpret_cast<const char*>(data), size));
    q5_COLLECTION* types = host.GetFileTypes();
    std::set<FILETYPE*> after;
    for (std::int64_t i = 0; i < types->Count(); ++i)
        after.insert(static_cast<FILETYPE*>(types->At(i)));
    if (types->Count() != 4 || after != registered) std::abort();

    const std::string first = Saved(host);
    Load(host, first);
    if (Saved(host) != first) std::abort();
    return 0;
}
