// The host's settings store and the command line of tessera-render.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/app/ini_settings.h"
#include "host/cli/options.h"

TEST(IniSettings, WrittenValuesReplaceInPlaceAndNewOnesJoinTheirSection) {
    IniSettings s;
    s.Parse("; driver options\n[Render\\ZB]\nHQ=0\nRefine=yes\n");
    EXPECT_EQ(s.GetInt("Render\\ZB\\Refine", 3), 3); // not a number: the default
    s.SetInt("Render\\ZB\\HQ", 0);
    EXPECT_FALSE(s.Changed());
    s.SetInt("Render\\ZB\\HQ", 1);
    s.SetInt("Top", -2);
    s.SetInt("Render\\ZB\\Use2Thread", 0);
    EXPECT_TRUE(s.Changed());
    EXPECT_EQ(s.GetInt("render\\zb\\hq", 0), 1);
    // Keys outside any section lead, so that reading the text back keeps them there; comments
    // are not kept.
    EXPECT_EQ(s.Text(), "Top=-2\n\n[Render\\ZB]\nHQ=1\nRefine=yes\nUse2Thread=0\n");
}

TEST(CommandLine, SizeSidesAreWholeNumbersUpTo16384) {
    std::int32_t w = 0, h = 0;
    EXPECT_TRUE(ParseSize("16384x1", w, h));
    EXPECT_EQ(w, 16384);
    EXPECT_EQ(h, 1);
    EXPECT_FALSE(ParseSize("16385x1", w, h));
    EXPECT_FALSE(ParseSize("1.5x10", w, h));
}

TEST(CommandLine, SequenceNamesNumberBeforeTheExtension) {
    EXPECT_EQ(SequenceFileName("a.b/turn", 3, 5), "a.b/turn_003");
    EXPECT_EQ(SequenceFileName("t.png", 12, 20000), "t_00012.png");
}

TEST(CommandLine, OptionsTakeValuesSeparatelyOrAfterAnEqualsSign) {
    const char* args[] = {"tessera-render", "m.obj",    "--camera", "10,20,7,50",
                          "--fade=red",     "--refine", "off"};
    CliOptions o;
    std::string error;
    ASSERT_EQ(ParseCommandLine(7, args, o, error), ParseOutcome::Run) << error;
    EXPECT_EQ(o.model, "m.obj");
    EXPECT_EQ(o.yaw.value_or(0), 10);
    EXPECT_EQ(o.pitch.value_or(0), 20);
    EXPECT_EQ(o.distance.value_or(0), 7);
    EXPECT_EQ(o.fov.value_or(0), 50);
    EXPECT_TRUE(o.fade);
    EXPECT_EQ(o.fadeColour.value_or(0), 0x0000FFu);
    EXPECT_EQ(o.refine, false);
}

TEST(CommandLine, SetNeedsTheOptionsPageAndTakesKeyEqualsValue) {
    const std::vector<std::pair<std::vector<const char*>, ParseOutcome>> cases = {
        {{"--options=cancel", "--set", "Render\\ZB\\HQ=1", "--set=Render\\ZB\\HQtri=a=b"},
         ParseOutcome::Run},
        {{"--set", "Render\\ZB\\HQ=1"}, ParseOutcome::Error},
        {{"--options", "--set", "=1"}, ParseOutcome::Error},
        {{"--options", "--set", "Render\\ZB\\HQ"}, ParseOutcome::Error},
        {{"--options=later"}, ParseOutcome::Error},
    };
    for (const auto& [args, outcome] : cases) {
        std::vector<const char*> argv = {"tessera-render"};
        argv.insert(argv.end(), args.begin(), args.end());
        CliOptions o;
        std::string error;
        EXPECT_EQ(ParseCommandLine(static_cast<int>(argv.size()), argv.data(), o, error), outcome)
            << args[0] << " " << error;
        if (outcome != ParseOutcome::Run) continue;
        EXPECT_EQ(o.optionsPage, CliOptions::OptionsPage::Cancel);
        EXPECT_EQ(o.pageSettings, (std::vector<std::pair<std::string, std::string>>{
                                      {"Render\\ZB\\HQ", "1"}, {"Render\\ZB\\HQtri", "a=b"}}));
    }
}
