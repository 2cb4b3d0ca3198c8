// The host's settings store and the command line of tessera-render.
#include <gtest/gtest.h>

#include "host/app/ini_settings.h"
#include "host/cli/options.h"

#include <vector>

namespace {

ParseOutcome Parse(std::vector<const char*> args, CliOptions& o, std::string& error) {
    args.insert(args.begin(), "tessera-render");
    return ParseCommandLine(static_cast<int>(args.size()), args.data(), o, error);
}

} // namespace

TEST(IniSettings, KeysSplitAtTheLastBackslashIntoSectionAndName) {
    IniSettings s;
    s.Parse("; driver options\n[Render\\ZB]\nHQ = 1\nHQtri=7000\n\n[Other]\nHQ=5\n");
    EXPECT_EQ(s.GetInt("Render\\ZB\\HQ", 0), 1);
    EXPECT_EQ(s.GetInt("Render\\ZB\\HQtri", 5000), 7000);
    EXPECT_EQ(s.GetInt("Other\\HQ", 0), 5);
    EXPECT_EQ(s.GetInt("render\\zb\\hq", 0), 1);
}

TEST(IniSettings, MissingOrMalformedValuesGiveTheDefault) {
    IniSettings s;
    s.Parse("[Render\\ZB]\nRefine=yes\nHQ=\nUse2Thread=99999999999\n");
    EXPECT_EQ(s.GetInt("Render\\ZB\\Refine", 1), 1);
    EXPECT_EQ(s.GetInt("Render\\ZB\\HQ", 3), 3);
    EXPECT_EQ(s.GetInt("Render\\ZB\\Use2Thread", 1), 1);
    EXPECT_EQ(s.GetInt("Render\\ZB\\Missing", -4), -4);
}

TEST(IniSettings, WrittenValuesReplaceInPlaceAndNewOnesJoinTheirSection) {
    IniSettings s;
    s.Parse("[Render\\ZB]\nHQ=0\n");
    EXPECT_FALSE(s.Changed());
    s.SetInt("Render\\ZB\\HQ", 0);
    EXPECT_FALSE(s.Changed());
    s.SetInt("Render\\ZB\\HQ", 1);
    s.SetInt("Top", -2);
    s.SetInt("Render\\ZB\\Refine", 0);
    EXPECT_TRUE(s.Changed());
    // Keys outside any section lead, so that reading the text back keeps them there.
    EXPECT_EQ(s.Text(), "Top=-2\n\n[Render\\ZB]\nHQ=1\nRefine=0\n");
}

TEST(CommandLine, SizeMustBeWholeSidesFrom1To16384) {
    std::int32_t w = 0, h = 0;
    EXPECT_TRUE(ParseSize("64x48", w, h));
    EXPECT_EQ(w, 64);
    EXPECT_EQ(h, 48);
    EXPECT_TRUE(ParseSize("16384x1", w, h));
    EXPECT_FALSE(ParseSize("0x10", w, h));
    EXPECT_FALSE(ParseSize("100000x10", w, h));
    EXPECT_FALSE(ParseSize("10x-1", w, h));
    EXPECT_FALSE(ParseSize("10", w, h));
    EXPECT_FALSE(ParseSize("10x10x10", w, h));
    EXPECT_FALSE(ParseSize("1.5x10", w, h));
}

TEST(CommandLine, ColoursPutRedInTheLowByte) {
    std::uint32_t c = 0;
    EXPECT_TRUE(ParseColour("#ff8000", c));
    EXPECT_EQ(c, 0x0080FFu);
    EXPECT_TRUE(ParseColour("0A0B0C", c));
    EXPECT_EQ(c, 0x0C0B0Au);
    EXPECT_TRUE(ParseColour("blue", c));
    EXPECT_EQ(c, 0xFF0000u);
    EXPECT_FALSE(ParseColour("#12345", c));
    EXPECT_FALSE(ParseColour("#12345g", c));
    EXPECT_FALSE(ParseColour("mauve", c));
}

TEST(CommandLine, SequenceNamesNumberBeforeTheExtension) {
    EXPECT_EQ(SequenceFileName("out/turn.png", 7, 36), "out/turn_007.png");
    EXPECT_EQ(SequenceFileName("turn", 0, 2), "turn_000");
    EXPECT_EQ(SequenceFileName("a.b/turn", 3, 5), "a.b/turn_003");
    EXPECT_EQ(SequenceFileName("t.png", 12, 20000), "t_00012.png");
}

TEST(CommandLine, OptionsTakeValuesSeparatelyOrAfterAnEqualsSign) {
    CliOptions o;
    std::string error;
    ASSERT_EQ(Parse({"model.obj", "-o", "x.png", "--size=320x200", "--camera", "10,20,7,50",
                     "--background", "black,#ffffff", "--fade=red", "--refine", "off", "--frames",
                     "4", "--supersample", "--edges"},
                    o, error),
              ParseOutcome::Run)
        << error;
    EXPECT_EQ(o.model, "model.obj");
    EXPECT_EQ(o.output, "x.png");
    EXPECT_EQ(o.width, 320);
    EXPECT_EQ(o.height, 200);
    EXPECT_EQ(*o.yaw, 10);
    EXPECT_EQ(*o.pitch, 20);
    EXPECT_EQ(*o.distance, 7);
    EXPECT_EQ(*o.fov, 50);
    EXPECT_EQ(*o.background[0], 0u);
    EXPECT_EQ(*o.background[1], 0xFFFFFFu);
    EXPECT_TRUE(o.fade);
    EXPECT_EQ(*o.fadeColour, 0x0000FFu);
    EXPECT_FALSE(*o.refine);
    EXPECT_EQ(o.frames, 4);
    EXPECT_TRUE(o.supersample);
    EXPECT_TRUE(o.edges);
}

TEST(CommandLine, BadInputIsOneErrorNamingTheProblem) {
    const std::vector<std::vector<const char*>> cases = {
        {"--size", "0x10"}, {"--bogus"},      {"--frames", "0"},         {"--refine", "maybe"},
        {"--fov", "180"},   {"--orbit", "1"}, {"--background", "1,2,3"}, {"-o"},
        {"a.obj", "b.obj"}, {"--edges=yes"},
    };
    for (const auto& args : cases) {
        CliOptions o;
        std::string error;
        EXPECT_EQ(Parse(args, o, error), ParseOutcome::Error) << args[0];
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(error.find('\n'), std::string::npos);
    }
    CliOptions o;
    std::string error;
    Parse({"--bogus"}, o, error);
    EXPECT_EQ(error, "unknown option --bogus");
    EXPECT_EQ(Parse({"--size", "1x1", "--help"}, o, error), ParseOutcome::Help);
}
