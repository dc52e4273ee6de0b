#include <filesystem>

#include "command_test.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulated_line.h"
#include "simulator/line/simulator_registry.h"
#include "support/file_size_limit.h"
#include "terminal/json.h"

namespace pelvan {
namespace {

/// Ramp to 100.0 at 5 degrees a minute, soak half an hour, end.
constexpr char kDry[] = "4000 1\n4002 1\n4002 3\n4002 3\n4050 68\n4051 82\n4052 89\n"
                        "4001 1\n4003 2\n4012 50\n4007 1000\n4009 1\n4011 1\n"
                        "4001 2\n4003 3\n4004 0\n4005 30\n4006 0\n4009 1\n4010 0\n4011 0\n"
                        "4001 3\n4003 0\n4016 0\n4017 0\n";
/// The same with a set point beyond the limit.
std::string too_hot() {
    std::string text = kDry;
    return text.replace(text.find("1000"), 4, "9999\n4007 12000").erase(text.find("4007 9999"), 10);
}

/// All runs reach the same controller.
class ProfileCommand : public CommandTest {
  protected:
    ProfileCommand() {
        tick.step_ms = 0.5;
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
        testing::write_file(file, kDry);
        use("simulated:742");
        open_device = [this](const std::string&, const LineSettings& settings) {
            return std::make_unique<simulator::SimulatedLine>(line_clock, station, settings);
        };
        configure("station");
    }
    void use(const std::string& device) {
        station = simulator::make_station(*simulator::parse_simulated_device(device));
    }
    void expect_done(const std::string& line) {
        EXPECT_EQ(run("profile " + line), exit_code::kDone) << line << ": " << err.str();
    }
    void expect_refused(const std::string& line, const std::string& sentence) {
        EXPECT_EQ(run("profile " + line), exit_code::kFailed) << line;
        EXPECT_TRUE(told("pelvan7: " + sentence + "\n")) << line << ": " << err.str();
    }
    const std::string file = dir.file("dry.txt");
    std::shared_ptr<simulator::Station> station;
    std::shared_ptr<simulator::LineClock> line_clock = std::make_shared<simulator::LineClock>(tick);
};

TEST_F(ProfileCommand, ChecksAFileWithoutAController) {
    configure("nothing there");
    EXPECT_EQ(run("profile check --model 742 " + file), exit_code::kDone);
    EXPECT_EQ(out.str(), "Profile 1 \"DRY\", 3 steps\nNothing was found wrong.\n");
    expect_refused("check " + file,
                   "The file does not say which model it is for: say it with --model.");
    testing::write_file(file, "*\n   Model #:  742\n" + too_hot());
    EXPECT_EQ(run("profile check " + file), exit_code::kFailed);
    EXPECT_TRUE(
        told("pelvan7: Profile 1, step 1: set point 1 is from -200.0 to 999.9 degrees, not"))
        << err.str();
    EXPECT_EQ(run("profile check --json " + file), exit_code::kFailed);
    EXPECT_TRUE(
        printed("\"findings\":[{\"profile\":1,\"step\":1,\"sentence\":\"Profile 1, step 1"));
    expect_refused("check --model 730 " + file, "Model 730 has no ramp profiles.");
    testing::write_file(file, "*\n   Model #:  1e30\n" + too_hot());
    EXPECT_EQ(run("profile check " + file), exit_code::kFailed);
    EXPECT_TRUE(told("32767.cds")) << err.str();
    testing::write_file(file, std::string("4000 1\n\0\x1B\x80", 10));
    EXPECT_EQ(run("profile check --model 742 " + file), exit_code::kFailed);
    EXPECT_EQ(run("profile check --model 742 /none"), exit_code::kBadOption);
    EXPECT_EQ(run("profile"), exit_code::kBadOption);
}

TEST_F(ProfileCommand, WritesListsShowsAndErases) {
    expect_refused("write " + file, "Nothing was changed.");
    expect_done("list");
    EXPECT_EQ(out.str(), "The controller has no profile.\n");
    expect_done("write --yes " + file);
    EXPECT_EQ(out.str(), "Profile 1 \"DRY\" is created with 3 steps.\n"
                         "Done, and found as it should be.\n");
    expect_done("write " + file);
    EXPECT_TRUE(printed("Nothing is to be changed.\n"));
    expect_done("write --yes --profile 1 --to 3 " + file);
    EXPECT_TRUE(printed("Profile 2 is created to keep the numbering, and erased again"));
    expect_refused("write --yes --profile 5 " + file, "The file has no profile 5.");
    expect_done("list --json");
    EXPECT_TRUE(out.str().starts_with("{\"model\":742,\"profiles\":[{\"number\":1,\"name\":\"DRY\","
                                      "\"steps\":3,\"seconds\":"))
        << out.str();
    expect_done("show 3");
    EXPECT_TRUE(printed("Profile 3 \"DRY\"\n  1  ramp at a rate: rate 5.0 degrees a minute, set "
                        "point 1 100.0 degrees, PID set 1"))
        << out.str();
    expect_refused("show 2", "There is no profile 2.");
    const std::string copy = dir.file("copy.txt");
    expect_done("show 1 --file " + copy);
    expect_refused("show 1 --file " + copy, "Nothing was saved.");
    expect_done("write " + copy);
    EXPECT_TRUE(printed("Nothing is to be changed."));
    expect_done("copy 1 4 --yes");
    station->faults = simulator::FaultSource({.lost = 0.6, .seed = 1});
    EXPECT_EQ(run("profile list --retries 0"), exit_code::kFailed);
    EXPECT_TRUE(printed("Not everything could be read")) << out.str() << err.str();
    station->faults = simulator::FaultSource({});
    expect_refused("copy 2 4 --yes", "There is no profile 2.");
    expect_done("erase 1 3 4 --yes");
    expect_done("list");
    EXPECT_EQ(out.str(), "The controller has no profile.\n");

    use("simulated:730");
    expect_refused("list", "Model 730 has no ramp profiles.");
    expect_refused("hold", "Model 730 has no ramp profiles.");
    expect_refused("list --address 9", "The controller's model could not be read.");
}

TEST_F(ProfileCommand, SaysWhatWasRefusedAndPutsBackWhatWasThere) {
    expect_done("write --yes " + file);
    testing::write_file(file, too_hot());
    EXPECT_EQ(run("profile write --yes " + file), exit_code::kFailed);
    EXPECT_TRUE(told("Nothing was changed. --unchecked writes all the same.\n"));
    const std::string refused = "Profile 1, step 1: the controller refused set point 1 = 1200.0 "
                                "degrees (register 4007) with exception 3.";
    expect_refused("write --yes --unchecked --put-back " + file, refused);
    EXPECT_TRUE(printed("What was there before is written back.\n"));
    expect_done("show 1");
    EXPECT_TRUE(printed("set point 1 100.0 degrees"));
    expect_refused("write --json --yes --unchecked " + file, refused);
    EXPECT_TRUE(told("Not as before or only in part: 1. --put-back would have written back"));
    EXPECT_TRUE(printed("\"completed\":false")) << out.str();
}

TEST_F(ProfileCommand, StartsHoldsAndWatches) {
    expect_done("write --yes " + file);
    expect_refused("hold",
                   "The controller refused the command hold with exception 3. No profile runs "
                   "(off).");
    expect_refused("start 1", "Not started.");
    EXPECT_TRUE(printed("\nIt takes 0:3")) << out.str();
    EXPECT_TRUE(printed(" to 100.\n")) << out.str();
    expect_refused("start 7 --yes", "There is no profile 7.");
    expect_refused("start 1 --yes --steepest 3",
                   "Not started. --unchecked starts it all the same.");
    expect_done("start 1 --yes");
    EXPECT_TRUE(printed("Profile 1, step 1 is running, 0:0"));
    expect_refused("write --yes --to 1 --profile 1 " + file + " --unchecked",
                   "Profile 1 runs: it can be changed when it has come to its end or was ended.");
    expect_done("hold --json");
    EXPECT_TRUE(out.str().starts_with("{\"outcome\":\"done\",\"sentence\":\"Profile 1, step 1 is "
                                      "held, "))
        << out.str();
    expect_done("resume");
    expect_done("next");
    EXPECT_TRUE(printed("Profile 1, step 2 is running, 0:30:00 left."));
    const std::string csv = dir.file("run.csv");
    expect_done("watch --curve --interval 60 --count 3 --csv " + csv);
    EXPECT_TRUE(printed("step 2 is running, 0:27:")) << out.str();
    EXPECT_TRUE(printed(", deviation ")) << out.str();
    EXPECT_EQ(std::ranges::count(testing::read_file(csv), '\n'), 4);
    expect_refused("watch --count 1 --csv " + csv, "Nothing was watched.");
    {
        const testing::FileSizeLimit full(100);
        expect_refused("watch --yes --count 3 --csv " + csv,
                       "The file \"" + csv + "\" cannot be written.");
    }
    expect_done("watch --json --count 2");
    EXPECT_EQ(std::ranges::count(out.str(), '\n'), 2);
    EXPECT_TRUE(out.str().starts_with("{\"state\":\"running\",\"profile\":1,\"step\":2,"));
    expect_done("end");

    on_wait = [&] {
        simulator::FaultPlan plan;
        plan.lost = 1;
        station->faults = simulator::FaultSource(plan);
    };
    EXPECT_EQ(run("profile watch --count 3"), exit_code::kFailed);
    EXPECT_EQ(err.str(), "pelvan7: No reply (register 100).\n");
}

TEST(JsonText, IsWellFormedWhateverTheTextsAre) {
    const std::string bytes("\"\\\n\x1B\x7F\xC3\xA9\xF0\x9F\x94\xA5\xFF\0", 13);
    EXPECT_EQ(Json(bytes).text(),
              "\"\\\"\\\\\\u000A\\u001B\\u007F\\u00E9\\uD83D\\uDD25\\u00FF\\u0000\"");
    Json list = Json::array();
    list.add(std::optional<int>()).add(-1.5).add(true).add(std::nan("")).add(Json::object());
    EXPECT_EQ(Json::object().set("a\"", std::move(list)).set("b", Json::array()).text(),
              R"({"a\"":[null,-1.5,true,null,{}],"b":[]})");
}

} // namespace
} // namespace pelvan
