// What is remembered for the person: the settings file, recent files, window places, the theme.
#include <gtest/gtest.h>

#include <map>

#include "personal/recent_files.h"
#include "personal/theme.h"
#include "personal/window_places.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class PersonalTest : public ::testing::Test {
  protected:
    testing::TempDir dir;
    const std::string path = dir.file("new folder/settings.ini");
};

TEST_F(PersonalTest, TextsComeBackAsTheyWereAndOtherRunsKeepTheirs) {
    const Texts texts = {"plain", " spaces ", "\"quoted\"", "'", "a=b;c", "", "k\xC3\xA4se"};
    PersonalSettings settings(path);
    for (std::size_t i = 0; i < texts.size(); ++i)
        settings.set_text("A", "key " + std::to_string(i), texts[i]);
    settings.set_text("A", "two lines", "a\r\n[B]\r\nkey=forged");
    PersonalSettings other(path);
    other.set_text("B", "own", "kept");
    other.save();
    settings.save();
    const PersonalSettings read(path);
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(read.text("A", "key " + std::to_string(i)), texts[i]);
    EXPECT_EQ(read.text("A", "two lines"), "");
    EXPECT_EQ(read.text("B", "own"), "kept");
}

TEST_F(PersonalTest, WhatCannotBeWrittenOrReadHoldsNobodyUp) {
    testing::write_file(dir.file("new folder"), "a file, where the folder should be");
    PersonalSettings settings(path);
    settings.set_text("A", "key", "text");
    settings.save();
    EXPECT_EQ(settings.text("A", "key"), "text");
    std::filesystem::remove(dir.file("new folder"));
    settings.save();
    EXPECT_EQ(PersonalSettings(path).text("A", "key"), "text") << "the next try";
}

TEST_F(PersonalTest, SettingsLieWhereTheSystemSays) {
    std::map<std::string, const char*> variables;
    const auto variable = [&](const char* name) { return variables[name]; };
    EXPECT_EQ(personal_settings_path(variable), "");
    variables["HOME"] = "/home/k";
    EXPECT_EQ(personal_settings_path(variable), "/home/k/.config/pelvan7/settings.ini");
    variables["XDG_CONFIG_HOME"] = "relative";
    EXPECT_EQ(personal_settings_path(variable), "/home/k/.config/pelvan7/settings.ini");
    variables["XDG_CONFIG_HOME"] = "/c";
    EXPECT_EQ(personal_settings_path(variable), "/c/pelvan7/settings.ini");
}

TEST_F(PersonalTest, RecentFilesAreThoseThatAreThereTheLastOneFirst) {
    PersonalSettings settings;
    RecentFiles recent(settings);
    for (int i = 0; i < RecentFiles::kMaxFiles + 2; ++i) {
        testing::write_file(dir.file(std::to_string(i)), "x");
        recent.add("set", dir.file(std::to_string(i)));
    }
    recent.add("set", dir.file("5"));
    std::filesystem::remove(dir.file("11"));
    Texts expected;
    for (const char* name : {"5", "10", "9", "8", "7", "6", "4", "3", "2"})
        expected.push_back(dir.file(name));
    EXPECT_EQ(recent.of("set"), expected);
    EXPECT_TRUE(recent.of("setup").empty());
}

TEST_F(PersonalTest, WindowPlacesFitTheRoomAndHostileOnesAreNone) {
    const WindowPlace room{0, 20, 960, 500};
    EXPECT_EQ(fitted({-50, 0, 300, 200}, room), (WindowPlace{0, 20, 300, 200}));
    EXPECT_EQ(fitted({900, 510, 300, 200}, room), (WindowPlace{660, 320, 300, 200}));
    EXPECT_EQ(fitted({10, 30, 3000, 2000}, room), (WindowPlace{0, 20, 960, 500}));
    PersonalSettings settings;
    WindowPlaces places(settings);
    for (const WindowPlace& place : {WindowPlace{-3, 4, 5, 6}, WindowPlace{1, 2, 3, 4, true}}) {
        places.keep("frm_Listen", place);
        EXPECT_EQ(places.of("frm_Listen"), place);
    }
    for (const char* text : {"", "1 2 3", "a b c d", "1 2 0 4", "1 2 3 999999999999", "1 2 3 -4"}) {
        settings.set_text("WINDOWS", "frm_Listen", text);
        EXPECT_EQ(places.of("frm_Listen"), std::nullopt) << text;
    }
}

TEST_F(PersonalTest, TheFirstThatSaysLightOrDarkCounts) {
    for (const ThemeChoice choice : {ThemeChoice::AsDesktop, ThemeChoice::Light, ThemeChoice::Dark})
        EXPECT_EQ(theme_choice(text_of(choice)), choice);
    const std::tuple<const char*, std::string, std::optional<Shade>> gtk[] = {
        {"", "", std::nullopt},
        {"Adwaita:dark", "", Shade::Dark},
        {"Adwaita", "[Settings]\ngtk-application-prefer-dark-theme=1\n", Shade::Light},
        {"", "[Settings]\ngtk-application-prefer-dark-theme = true\n", Shade::Dark},
        {"", "[Settings]\ngtk-theme-name=Yaru-dark\n", Shade::Dark},
        {"", "[Settings]\ngtk-theme-name=Darkness\n", Shade::Light},
        {"", "[Other]\ngtk-theme-name=Yaru-dark\n", std::nullopt},
    };
    for (const auto& [variable, settings, shade] : gtk)
        EXPECT_EQ(gtk_shade(variable, settings), shade) << variable << settings;
    ShadeSources sources;
    EXPECT_EQ(shade_to_use(sources), Shade::Light);
    sources.colors = Shade::Dark;
    EXPECT_EQ(shade_to_use(sources), Shade::Dark);
    sources.gtk = Shade::Light;
    EXPECT_EQ(shade_to_use(sources), Shade::Light);
    sources.desktop = shade_of_color_scheme(1);
    EXPECT_EQ(shade_to_use(sources), Shade::Dark);
    sources.choice = ThemeChoice::Light;
    EXPECT_EQ(shade_to_use(sources), Shade::Light);
}

} // namespace
} // namespace pelvan
