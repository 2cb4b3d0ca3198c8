// Finding formats by content: the signature descriptions, the search of the registry, the
// bounded read, and the format information document.
#include "registry_fixture.h"

#include "core/containers/xml_node.h"
#include "core/filetype/format_detect.h"
#include "core/filetype/format_info.h"
#include "core/stream/stream.h"

#include <cstring>

namespace {

// A stream of `size` bytes, all zero except those a test places, that counts what it hands out.
class CountingStream final : public q5_STREAM {
public:
    explicit CountingStream(std::int64_t size) : size_(size) {}
    void Place(std::int64_t at, const std::string& bytes) { placed_.emplace_back(at, bytes); }
    std::int64_t BytesRead() const { return bytesRead_; }

    void DeleteThis() override { delete this; }
    std::int64_t Seek(std::int64_t position, std::int32_t origin) override {
        const std::int64_t base = origin == 1 ? position_ : origin == 2 ? size_ : 0;
        if (base + position < 0 || base + position > size_) return -1;
        return position_ = base + position;
    }
    std::int64_t Tell() override { return position_; }
    std::int64_t GetSize() override { return size_; }
    bool Truncate() override { return false; }
    bool Flush() override { return true; }
    std::int64_t Read(void* buffer, std::int64_t count) override {
        const std::int64_t n = std::max<std::int64_t>(0, std::min(count, size_ - position_));
        auto* out = static_cast<char*>(buffer);
        std::memset(out, 0, static_cast<std::size_t>(n));
        for (const auto& [at, bytes] : placed_)
            for (std::size_t i = 0; i < bytes.size(); ++i)
                if (at + static_cast<std::int64_t>(i) >= position_ &&
                    at + static_cast<std::int64_t>(i) < position_ + n)
                    out[at + static_cast<std::int64_t>(i) - position_] = bytes[i];
        position_ += n;
        bytesRead_ += n;
        return n;
    }
    std::int64_t Write(const void*, std::int64_t) override { return 0; }

private:
    ~CountingStream() = default;
    std::int64_t size_;
    std::int64_t position_ = 0;
    std::int64_t bytesRead_ = 0;
    std::vector<std::pair<std::int64_t, std::string>> placed_;
};

bool Matches(const char* description, const std::string& content, std::int64_t size = -2) {
    return q5MatchSignature(description, reinterpret_cast<const std::uint8_t*>(content.data()),
                            content.size(), size == -2 ? std::int64_t(content.size()) : size);
}

TEST(Signature, BytesAtAnOffset) {
    const std::string content = std::string("\0\0\0\0\xCA\xFE\xBA\xBE", 8);
    EXPECT_TRUE(Matches("signature=4:CA FE", content));
    EXPECT_TRUE(Matches("signature = 0x4 : cafe ?? be", content));
    EXPECT_FALSE(Matches("signature=3:CA FE", content));
    EXPECT_FALSE(Matches("signature=7:BE 00", content)); // runs past the end
    EXPECT_TRUE(Matches("signature=0:00 & 4:CA & 7:BE", content));
    EXPECT_FALSE(Matches("signature=0:00 & 4:CB", content));
}

TEST(Signature, SeveralSignaturesAreAlternatives) {
    EXPECT_TRUE(Matches("signature=0:01; signature=0:02", "\x02"));
    EXPECT_FALSE(Matches("signature=0:01\nsignature=0:03", "\x02"));
}

TEST(Signature, SeekMovesTheBaseOfLaterTests) {
    std::string content(600, '\0');
    content[512] = 'U';
    content[513] = '\xAA';
    EXPECT_TRUE(Matches("$seek=512; signature=0:55 AA", content));
    EXPECT_FALSE(Matches("signature=0:55 AA; $seek=512", content));
    EXPECT_TRUE(Matches("$seek=500; signature=12:55", content));
    EXPECT_FALSE(Matches("$seek=599; signature=2:00", content));
}

TEST(Signature, AMatchingAntisignatureRefuses) {
    const std::string avi("RIFF\x10\0\0\0AVI LIST", 16);
    const std::string wave("RIFF\x10\0\0\0WAVEfmt ", 16);
    const char* riffNotAvi = "signature=0:52 49 46 46; antisignature=8:41 56 49 20";
    EXPECT_FALSE(Matches(riffNotAvi, avi));
    EXPECT_TRUE(Matches(riffNotAvi, wave));
    EXPECT_FALSE(Matches("antisignature=\"RIFF\"", wave));
    EXPECT_TRUE(Matches("antisignature=\"RIFX\"", wave)); // nothing required, nothing refused
}

TEST(Signature, TextAfterBlanksAndAByteOrderMark) {
    const char* solid = "signature=\"solid \"";
    EXPECT_TRUE(Matches(solid, "solid cube"));
    EXPECT_TRUE(Matches(solid, " \t\r\nSOLID cube"));
    EXPECT_TRUE(Matches(solid, "\xEF\xBB\xBF  solid cube"));
    EXPECT_TRUE(Matches(solid, std::string("\xFF\xFE \0s\0o\0l\0i\0d\0 \0", 16)));
    EXPECT_TRUE(Matches(solid, std::string("\xFE\xFF\0s\0o\0l\0i\0d\0 ", 14)));
    EXPECT_FALSE(Matches(solid, "x solid"));
    EXPECT_FALSE(Matches(solid, "solid")); // the blank in the text is needed
    EXPECT_TRUE(Matches("signature=\"say \\\"hi\\\"\"", "say \"hi\""));
}

TEST(Signature, SizeRules) {
    std::string stl(84 + 2 * 50, '\0');
    stl[80] = 2;
    EXPECT_TRUE(Matches("esize=84+50*u32le@80", stl));
    EXPECT_FALSE(Matches("esize=84+50*u32le@80", stl + "x"));
    EXPECT_FALSE(Matches("esize=84+50*u32be@80", stl));
    EXPECT_TRUE(Matches("esize=184", stl));
    EXPECT_TRUE(Matches("esize=>=100; esize=<=184", stl));
    EXPECT_FALSE(Matches("esize=>=185", stl));
    EXPECT_TRUE(Matches("esize=%8", stl));
    EXPECT_FALSE(Matches("esize=%5", stl));
    EXPECT_FALSE(Matches("esize=4+1*u8@200", stl)); // the field lies beyond the content
    EXPECT_FALSE(Matches("esize=184", stl, -1));    // the size is not known
    // The size is the stream's, not the content's: a long stream seen through a short prefix.
    EXPECT_TRUE(Matches("esize=100000", stl, 100000));
}

TEST(Signature, MalformedDescriptionsMatchNothing) {
    for (const char* bad : {"signature", "signature=", "signature=0:", "signature=0:A",
                            "signature=0:GG", "signature=x:00", "signature=\"open", "size=1",
                            "signature=0:00 &", "esize=%0", "esize=1+2*u64@0", "$seek=-1",
                            "esize=1+2@3", "signature=\"a\"b\"", "signature=99999999999999:00"})
        EXPECT_FALSE(Matches(bad, std::string(16, '\0'))) << bad;
    EXPECT_FALSE(q5MatchSignature(nullptr, nullptr, 0, 0));
    EXPECT_TRUE(Matches("", "anything")); // a description of nothing asks nothing
}

class Detection : public RegistryTest {
protected:
    FILETYPE* Signed(const q5_WCHAR* ext, const q5_WCHAR* name, std::uint32_t n,
                     const char* signature, std::uint32_t flags = 2 | kFileTypeCap400) {
        FILETYPE* type = Register(ext, name, n, flags);
        type->signature = signature;
        return type;
    }
    FILETYPE* Find(q5_STREAM* stream, const q5_WCHAR* name, FTINFO* info = nullptr) {
        return q5GetFileFormat(stream, name, info);
    }
};

TEST_F(Detection, ContentWinsOverTheFileName) {
    FILETYPE* byName = Register(u"png", u"Named", 1, 2 | kFileTypeCap400);
    FILETYPE* png = Signed(u"png", u"PNG", 2, "signature=0:89 50 4E 47");
    FILETYPE* gif = Signed(u"gif", u"GIF", 3, "signature=\"GIF8\"");
    auto* stream = new CountingStream(100);
    stream->Place(0, "GIF89a");
    EXPECT_EQ(Find(stream, u"picture.png"), gif);
    stream->Place(0, "\x89PNG");
    EXPECT_EQ(Find(stream, u"picture.gif"), png);
    stream->Place(0, "nothing");
    EXPECT_EQ(Find(stream, u"picture.png"), byName);  // no signature fits: the unsigned type
    EXPECT_EQ(Find(stream, u"picture.gif"), nullptr); // a signed type is not taken by name
    FTINFO info;
    info.options |= kFtTrustName;
    EXPECT_EQ(Find(stream, u"picture.gif", &info), gif);
    EXPECT_EQ(info.result, gif);
    stream->Release();
}

TEST_F(Detection, ATypeWithoutASignatureIsFoundByItsExtensionAlone) {
    FILETYPE* obj = Register(u"obj", u"OBJ", 1, 2 | kFileTypeCap400);
    EXPECT_EQ(Find(nullptr, u"model.OBJ"), obj);
    FTINFO info;
    info.options &= ~kFtExtension;
    EXPECT_EQ(Find(nullptr, u"model.obj", &info), nullptr);
    EXPECT_EQ(info.result, nullptr);
}

TEST_F(Detection, AnAntisignatureTurnsTheSearchToTheNextType) {
    Signed(u"riff", u"RIFF not AVI", 1, "signature=\"RIFF\"; antisignature=8:41 56 49 20");
    FILETYPE* avi = Signed(u"avi", u"AVI", 2, "signature=0:52 49 46 46 & 8:41 56 49 20");
    auto* stream = new CountingStream(64);
    stream->Place(0, "RIFF");
    stream->Place(8, "AVI ");
    EXPECT_EQ(Find(stream, nullptr), avi);
    stream->Release();
}

TEST_F(Detection, SeekReachesASecondHeader) {
    FILETYPE* iso = Signed(u"iso", u"Disc image", 1, "$seek=0x8001; signature=0:43 44 30 30 31");
    auto* stream = new CountingStream(40000);
    stream->Place(0x8001, "CD001");
    // Beyond the prefix that detection reads: not found, and no more was read.
    EXPECT_EQ(Find(stream, nullptr), nullptr);
    EXPECT_LE(stream->BytesRead(), static_cast<std::int64_t>(kDetectPrefixBytes));
    iso->signature = "$seek=0x801; signature=0:43 44 30 30 31";
    stream->Place(0x801, "CD001");
    EXPECT_EQ(Find(stream, nullptr), iso);
    stream->Release();
}

TEST_F(Detection, OnlyABoundedPrefixIsReadWhateverTheSize) {
    for (int i = 0; i < 20; ++i) Signed(u"x", u"Never", 10 + i, "signature=0:FF FF; esize=>=1");
    FILETYPE* tail = Signed(u"t", u"Tail", 1, "esize=1000000000");
    auto* stream = new CountingStream(1000000000);
    stream->Seek(12345, 0);
    EXPECT_EQ(Find(stream, nullptr), tail);
    EXPECT_EQ(stream->BytesRead(), static_cast<std::int64_t>(kDetectPrefixBytes));
    EXPECT_EQ(stream->Tell(), 12345); // left where it was
    stream->Release();
}

TEST_F(Detection, NameMustMatchTypesNeedTheirExtensionToo) {
    FILETYPE* strict = Signed(u"abc", u"Strict", 1, "signature=0:41",
                              2 | kFileTypeCap400 | kFileTypeNameMustMatch);
    auto* stream = new CountingStream(10);
    stream->Place(0, "A");
    EXPECT_EQ(Find(stream, u"file.xyz"), nullptr);
    EXPECT_EQ(Find(stream, nullptr), nullptr);
    EXPECT_EQ(Find(stream, u"file.abc"), strict);
    stream->Release();
}

TEST_F(Detection, TheSearchSkipsDisabledAndFilteredTypesAndResumes) {
    FILETYPE* off = Signed(u"a", u"Off", 1, "signature=0:41");
    off->state = 0;
    FILETYPE* first = Signed(u"a", u"First", 2, "signature=0:41");
    FILETYPE* kind3 = Signed(u"a", u"Kind 3", 3, "signature=0:41", 3 | kFileTypeCap400);
    Signed(u"a", u"No capability", 4, "signature=0:41", 3);
    auto* stream = new CountingStream(10);
    stream->Place(0, "A");
    FTINFO info;
    EXPECT_EQ(Find(stream, nullptr, &info), first);
    info.startAfter = first;
    EXPECT_EQ(Find(stream, nullptr, &info), kind3);
    info.startAfter = kind3;
    EXPECT_EQ(Find(stream, nullptr, &info), nullptr);
    info.startAfter = nullptr;
    info.kind = 3;
    EXPECT_EQ(Find(stream, nullptr, &info), kind3);
    stream->Release();
}

TEST_F(Detection, TheInformationDocumentDescribesEachFormat) {
    FILETYPE* png = Signed(u"png", u"PNG <image>", 0x01020304, "signature=0:89");
    png->icon = 7;
    FILETYPE* off = Register(u"x,y", u"Off", 2, 1);
    off->state = 0;
    q5_XMLNODE document(u"Formats");
    EXPECT_EQ(QueryFormatInfo(&document, nullptr), Q5_OK);
    ASSERT_EQ(document.ChildCount(), 2u);
    const q5_XMLNODE* format = document.Child(0);
    EXPECT_EQ(std::u16string(format->GetName()), u"Format");
    EXPECT_EQ(std::u16string(format->FindChild(u"GUID")->GetText()),
              u"{01020304-0000-0000-0000-000000000000}");
    EXPECT_EQ(std::u16string(format->FindChild(u"flags")->GetText()), u"0x00000402");
    const q5_XMLNODE* info = format->FindChild(u"Info");
    EXPECT_EQ(std::u16string(info->GetText()), u"PNG <image>");
    EXPECT_EQ(std::u16string(info->GetAttribute(u"extensions")), u"png");
    EXPECT_EQ(std::u16string(info->GetAttribute(u"icon")), u"7");
    EXPECT_EQ(std::u16string(info->GetAttribute(u"signature")), u"1");
    EXPECT_EQ(std::u16string(document.Child(1)->FindChild(u"Info")->GetAttribute(u"enabled")),
              u"0");
    EXPECT_EQ(document.Child(1)->FindChild(u"Info")->GetAttribute(u"missing"), nullptr);
    EXPECT_EQ(
        format->ToXml(),
        "<Format><Info extensions=\"png\" kind=\"2\" icon=\"7\" enabled=\"1\" "
        "signature=\"1\">PNG &lt;image&gt;</Info>"
        "<GUID>{01020304-0000-0000-0000-000000000000}</GUID><flags>0x00000402</flags></Format>");

    FTINFO kind1;
    kind1.kind = 1;
    kind1.options = 0;
    q5_XMLNODE filtered(u"Formats");
    EXPECT_EQ(QueryFormatInfo(&filtered, &kind1), Q5_OK);
    EXPECT_EQ(filtered.ChildCount(), 1u);
    kind1.kind = 9;
    EXPECT_EQ(QueryFormatInfo(&filtered, &kind1), Q5_NOTHING);
    EXPECT_EQ(QueryFormatInfo(nullptr, nullptr), Q5_E_NOTIMPL);
}

} // namespace
