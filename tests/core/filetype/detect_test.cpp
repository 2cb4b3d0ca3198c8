// Finding formats by content: the signature descriptions, the search of the registry, the
// bounded read, and the format information document.
#include "registry_fixture.h"

#include "core/containers/xml_node.h"
#include "core/filetype/format_detect.h"
#include "core/filetype/format_info.h"
#include "core/stream/stream.h"

#include <algorithm>

namespace {

// A stream of `size` bytes, `head` and then zeros, that counts the bytes it hands out.
class CountingStream final : public q5_STREAM {
public:
    CountingStream(std::string head, std::int64_t size) : head_(std::move(head)), size_(size) {}
    std::int64_t BytesRead() const { return read_; }

    void DeleteThis() override { delete this; }
    std::int64_t Seek(std::int64_t position, std::int32_t) override { return at_ = position; }
    std::int64_t Tell() override { return at_; }
    std::int64_t GetSize() override { return size_; }
    bool Truncate() override { return false; }
    bool Flush() override { return true; }
    std::int64_t Read(void* buffer, std::int64_t count) override {
        const std::int64_t n = std::clamp<std::int64_t>(size_ - at_, 0, count);
        for (std::int64_t i = 0; i < n; ++i, ++at_)
            static_cast<char*>(buffer)[i] = at_ < std::ssize(head_) ? head_[at_] : '\0';
        read_ += n;
        return n;
    }
    std::int64_t Write(const void*, std::int64_t) override { return 0; }

private:
    ~CountingStream() = default;
    std::string head_;
    std::int64_t size_, at_ = 0, read_ = 0;
};

TEST(DetectSignature, DescriptionsMatchAsTheirClausesSay) {
    const std::string cafe("\0\0\0\0\xCA\xFE\xBA\xBE", 8), wave = "RIFF....WAVEfmt ";
    std::string boot(600, '\0');
    boot[512] = 'U';
    std::string stl(84 + 2 * 50, '\0');
    stl[80] = 2;
    const char* solid = "signature=\"solid \"";
    const struct {
        const char* description;
        std::string content;
        bool matches;
        std::int64_t size = -2; // -2: the content's own size
    } cases[] = {
        {"signature = 0x4 : cafe ?? be", cafe, true},
        {"signature=7:BE 00", cafe, false}, // runs past the end
        {"signature=0:00 & 4:CA & 7:BE", cafe, true},
        {"signature=0:00 & 4:CB", cafe, false},
        {"signature=0:01; signature=0:02\nsignature=0:03", "\x02", true}, // alternatives
        {"signature=0:55; $seek=512", boot, false}, // a seek moves only later tests
        {"antisignature=\"RIFX\"", wave, true},     // nothing required, nothing refused
        {solid, " \t\r\nSOLID cube", true},
        {solid, "\xEF\xBB\xBF  solid cube", true},
        {solid, std::string("\xFF\xFE \0s\0o\0l\0i\0d\0 \0", 16), true},
        {solid, std::string("\xFE\xFF\0s\0o\0l\0i\0d\0 ", 14), true},
        {solid, "x solid", false},
        {solid, "solid", false}, // the blank in the text is needed
        {"signature=\"say \\\"hi\\\"\"", "say \"hi\"", true},
        {"esize=84+50*u32le@80; esize=>=100; esize=<=184; esize=%8", stl, true},
        {"esize=84+50*u32le@80", stl + "x", false},
        {"esize=84+50*u32be@80", stl, false},
        {"esize=4+1*u8@200", stl, false},    // the field lies beyond the content
        {"esize=>=1", stl, false, -1},       // the size is not known
        {"esize=100000", stl, true, 100000}, // the stream's size, not the content's
        {"esize=>=185", stl, false},
        {"esize=%5", stl, false},
        {"", "anything", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(q5MatchSignature(c.description,
                                   reinterpret_cast<const std::uint8_t*>(c.content.data()),
                                   c.content.size(), c.size == -2 ? std::ssize(c.content) : c.size),
                  c.matches)
            << c.description;
}

TEST(DetectSignature, MalformedDescriptionsMatchNothing) {
    const std::uint8_t zeros[16] = {};
    for (const char* bad : {"signature", "signature=", "signature=0:", "signature=0:A",
                            "signature=0:GG", "signature=x:00", "signature=\"open", "size=1",
                            "signature=0:00 &", "esize=%0", "esize=1+2*u64@0", "$seek=-1",
                            "esize=1+2@3", "signature=\"a\"b\"", "signature=99999999999999:00"})
        EXPECT_FALSE(q5MatchSignature(bad, zeros, sizeof zeros, sizeof zeros)) << bad;
    EXPECT_FALSE(q5MatchSignature(nullptr, nullptr, 0, 0));
}

class Detection : public RegistryTest {
protected:
    FILETYPE* Signed(const q5_WCHAR* ext, std::uint32_t n, const char* signature,
                     std::uint32_t flags = 2 | kFileTypeCap400) {
        FILETYPE* type = Register(ext, u"Signed", n, flags);
        type->signature = signature;
        return type;
    }
    static FILETYPE* Detect(std::string content, const q5_WCHAR* name, FTINFO* info = nullptr) {
        q5_STREAM* stream = q5_STREAM::CreateFromMemory(content.data(), std::ssize(content));
        FILETYPE* found = q5GetFileFormat(stream, name, info);
        stream->Release();
        return found;
    }
};

TEST_F(Detection, ContentWinsOverTheFileNameAndOnlyUnsignedTypesGoByName) {
    FILETYPE* byName = Register(u"png", u"Named", 1, 2 | kFileTypeCap400);
    FILETYPE* png = Signed(u"png", 2, "signature=0:89 50 4E 47");
    FILETYPE* gif = Signed(u"gif", 3, "signature=\"GIF8\"");
    EXPECT_EQ(Detect("GIF89a", u"picture.png"), gif);
    EXPECT_EQ(Detect("\x89PNG", u"picture.gif"), png);
    EXPECT_EQ(Detect("nothing", u"picture.png"), byName);
    EXPECT_EQ(Detect("nothing", u"picture.gif"), nullptr);
    FTINFO info;
    info.options |= kFtTrustName;
    EXPECT_EQ(Detect("nothing", u"picture.gif", &info), gif);
    EXPECT_EQ(info.result, gif);
    EXPECT_EQ(q5GetFileFormat(nullptr, u"model.PNG", nullptr), byName);
    info.options &= ~(kFtExtension | kFtTrustName);
    EXPECT_EQ(q5GetFileFormat(nullptr, u"model.png", &info), nullptr);
    EXPECT_EQ(info.result, nullptr);
}

TEST_F(Detection, AMatchingAntisignatureTurnsTheSearchToTheNextType) {
    Signed(u"riff", 1, "signature=\"RIFF\"; antisignature=8:41 56 49 20");
    FILETYPE* avi = Signed(u"avi", 2, "signature=0:52 49 46 46 & 8:41 56 49 20");
    EXPECT_EQ(Detect(std::string("RIFF\0\0\0\0AVI ", 12), nullptr), avi);
}

TEST_F(Detection, SeekAndOffsetReachOnlyIntoABoundedPrefixReadOnce) {
    Signed(u"iso", 1, "$seek=0x8000; signature=1:43 44 30 30 31"); // beyond the prefix
    FILETYPE* near = Signed(u"iso", 2, "$seek=0x800; signature=1:43 44 30 30 31");
    std::string head(0x8006, '\0');
    head.replace(0x801, 5, "CD001");
    head.replace(0x8001, 5, "CD001");
    auto* stream = new CountingStream(head, 1000000000);
    stream->Seek(12345, 0);
    EXPECT_EQ(q5GetFileFormat(stream, nullptr, nullptr), near);
    EXPECT_EQ(stream->BytesRead(), static_cast<std::int64_t>(kDetectPrefixBytes));
    EXPECT_EQ(stream->Tell(), 12345); // left where it was
    stream->Release();
}

TEST_F(Detection, NameMustMatchTypesNeedTheirExtensionToo) {
    FILETYPE* strict =
        Signed(u"abc", 1, "signature=0:41", 2 | kFileTypeCap400 | kFileTypeNameMustMatch);
    EXPECT_EQ(Detect("A", u"file.xyz"), nullptr);
    EXPECT_EQ(Detect("A", nullptr), nullptr);
    EXPECT_EQ(Detect("A", u"file.abc"), strict);
}

TEST_F(Detection, TheSearchSkipsDisabledAndFilteredTypesAndResumes) {
    Signed(u"a", 1, "signature=0:41")->state = 0;
    FILETYPE* first = Signed(u"a", 2, "signature=0:41");
    Signed(u"a", 3, "signature=0:41", 2); // no capability
    FILETYPE* last = Signed(u"a", 4, "signature=0:41");
    FTINFO info;
    EXPECT_EQ(Detect("A", nullptr, &info), first);
    info.startAfter = first;
    EXPECT_EQ(Detect("A", nullptr, &info), last);
    info.startAfter = last;
    EXPECT_EQ(Detect("A", nullptr, &info), nullptr);
}

TEST_F(Detection, TheInformationDocumentDescribesEachFormat) {
    FILETYPE* type = Signed(u"x,y", 0x01020304, "signature=0:89", 0x401);
    type->state = 0;
    q5_XMLNODE document(u"Formats");
    EXPECT_EQ(QueryFormatInfo(&document, nullptr), Q5_OK);
    EXPECT_EQ(document.ToXml(),
              "<Formats><Format><Info extensions=\"x,y\" kind=\"1\" icon=\"12\" enabled=\"0\" "
              "signature=\"1\">Signed</Info><GUID>{01020304-0000-0000-0000-000000000000}</GUID>"
              "<flags>0x00000401</flags></Format></Formats>");
    FTINFO kind2;
    kind2.kind = 2;
    EXPECT_EQ(QueryFormatInfo(&document, &kind2), Q5_NOTHING);
    EXPECT_EQ(QueryFormatInfo(nullptr, nullptr), Q5_E_NOTIMPL);
}

} // namespace
