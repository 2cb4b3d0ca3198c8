// Dialog 106 is written twice, as a Win32 resource script and as the compact description that
// POSIX modules carry; the two must list the same controls.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "core/platform/dialog_controls.h"
#include "core/platform/module.h"
#include "plugin/resources/resource.h"
#include "support/module_loader.h"
#include "zbuffer/options_page.h"

namespace {

static_assert(options_page::kDialogId == IDD_ZB_OPTIONS);
static_assert(options_page::kUse2ThreadBox == IDC_ZB_USE2THREAD);
static_assert(options_page::kRefineBox == IDC_ZB_REFINE);
static_assert(options_page::kHighQualityBox == IDC_ZB_HQ);
static_assert(options_page::kTrianglesEdit == IDC_ZB_HQTRI);
static_assert(options_page::kTrianglesSpin == IDC_ZB_HQTRI_SPIN);

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

const std::string kResources = std::string(TESSERA_SOURCE_DIR) + "/plugin/resources/";

// Id, kind and text of each control, one line each.
std::string Describe(const std::vector<q5plat::ControlState>& controls) {
    std::string out;
    for (const auto& c : controls)
        out += std::to_string(c.id) + " " + q5plat::ControlKindName(c.kind) + " \"" +
               std::string(c.text.begin(), c.text.end()) + "\"\n";
    return out;
}

// The controls of dialog IDD_ZB_OPTIONS in the resource script.
std::string ControlsOfScript() {
    std::map<std::string, std::string> ids;
    const std::regex define(R"re(#define\s+(\w+)\s+(\d+))re");
    const std::string header = Slurp(kResources + "resource.h");
    for (std::sregex_iterator i(header.begin(), header.end(), define), end; i != end; ++i)
        ids[(*i)[1]] = (*i)[2];
    const std::string script = Slurp(kResources + "tessera_zb.rc");
    const auto begin = script.find("BEGIN", script.find("IDD_ZB_OPTIONS DIALOGEX"));
    const std::string block = script.substr(begin, script.find("\nEND", begin) - begin);
    const std::regex check(R"re(AUTOCHECKBOX\s+"([^"]*)",\s*(\w+))re");
    const std::regex edit(R"re(EDITTEXT\s+(\w+))re");
    const std::regex control(R"re(CONTROL\s+"([^"]*)",\s*(\w+),\s*"Q5_UPDOWN")re");
    std::string out;
    std::istringstream lines(block);
    std::string line;
    std::smatch m;
    while (std::getline(lines, line)) {
        if (std::regex_search(line, m, check))
            out += ids[m[2]] + " check \"" + m[1].str() + "\"\n";
        else if (std::regex_search(line, m, edit))
            out += ids[m[1]] + " edit \"\"\n";
        else if (std::regex_search(line, m, control))
            out += ids[m[2]] + " spin \"" + m[1].str() + "\"\n";
        else if (line.find_first_not_of(" \r\t") != std::string::npos &&
                 line.rfind("BEGIN", 0) != 0)
            ADD_FAILURE() << "a control line this test does not read: " << line;
    }
    return out;
}

TEST(OptionsDialog, CompactDescriptionListsTheControlsOfTheResourceScript) {
    const std::string compact = Slurp(kResources + "options_dialog.txt");
    std::vector<q5plat::ControlState> controls;
    ASSERT_TRUE(q5plat::ParseCompactDialog(compact, controls));
    EXPECT_EQ(Describe(controls), ControlsOfScript());
    EXPECT_EQ(Describe(controls), "2114 check \"#11\"\n2115 check \"#12\"\n2116 check \"#13\"\n"
                                  "212 edit \"\"\n214 spin \"\"\n");

    // The module carries dialog 106: on Windows compiled from the script, elsewhere the
    // compact description as it stands.
    const q5_HINSTANCE module = LoadedModule::Get().handle;
    ASSERT_NE(module, nullptr);
    const q5plat::ResourceView dialog = q5plat::FindResource(module, "#5", "#106");
    ASSERT_TRUE(dialog);
#if !defined(_WIN32)
    EXPECT_EQ(std::string(static_cast<const char*>(dialog.data), dialog.size), compact);
#endif
}

TEST(OptionsDialog, CompactLinesThatDoNotReadAreRefused) {
    std::vector<q5plat::ControlState> controls;
    for (const char* text : {"", "# only a note\n", "2114 check #11\n", "2114 slider \"\"\n",
                             "x check \"\"\n", "1 edit \"\"\n2 check\n"})
        EXPECT_FALSE(q5plat::ParseCompactDialog(text, controls)) << text;
}

} // namespace
