#include <filesystem>

#include "command_test.h"

namespace pelvan {
namespace {

/// Every run has a simulated controller of its own, as it came from the factory.
class TransferCommand : public CommandTest {
  protected:
    TransferCommand() {
        tick.step_ms = 0.5;
        std::filesystem::create_directory(dir.file("Reg Downloads"));
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
    }
    const std::string file = dir.file("setup.txt");
};

TEST_F(TransferCommand, SavesComparesAndRestores) {
    EXPECT_EQ(run("save " + file), exit_code::kDone) << err.str();
    EXPECT_TRUE(told("pelvan7: 50 %\n"));
    EXPECT_TRUE(testing::read_file(file).ends_with("25 0\r\n"));
    EXPECT_EQ(run("save --together " + file + "2"), exit_code::kDone) << err.str();
    EXPECT_EQ(testing::read_file(file + "2"), testing::read_file(file));
    EXPECT_EQ(run("compare --together " + file), exit_code::kDone) << err.str();
    EXPECT_EQ(run("restore --yes --compare " + file), exit_code::kDone) << err.str();

    std::string text = testing::read_file(file);
    text.replace(text.find("\r\n1500 -15\r\n"), 12, "\r\n1500 -9999\r\n");
    testing::write_file(file, text);
    EXPECT_EQ(run("compare " + file), exit_code::kFailed);
    EXPECT_TRUE(told("Controller holds: -15               1500           -9999    Different"));
    EXPECT_EQ(run("restore --yes " + file), exit_code::kFailed) << "beyond the limits";
    EXPECT_TRUE(told("1500           -9999    Error"));

    text.insert(text.rfind("25 0"), "\x1B]0;title\a\r\n" + std::string(1000000, 'x') + "\r\n");
    testing::write_file(file, text);
    EXPECT_EQ(run("compare " + file), exit_code::kFailed);
    EXPECT_TRUE(told("number: \\x1B]0;title\\x07\n"));
    EXPECT_LT(err.str().size(), 1000U);
}

TEST_F(TransferCommand, NothingHappensWithoutTheAnswerThatItNeeds) {
    testing::write_file(file, "old");
    EXPECT_EQ(run("save " + file), exit_code::kFailed);
    EXPECT_EQ(testing::read_file(file), "old");
    EXPECT_EQ(run("restore " + file), exit_code::kFailed);
    EXPECT_TRUE(told("Upload Canceled!"));
    EXPECT_EQ(run("restore --yes " + dir.file("none.txt")), exit_code::kBadOption);
    EXPECT_EQ(run("save --address 0 " + file), exit_code::kBadOption);
    int waits = 0;
    on_wait = [&] { ++waits; }; // a second, for a cable that came off
    for (const int retries : {0, 2}) {
        EXPECT_EQ(run("save --address 9 --retries " + std::to_string(retries) + " " + file),
                  exit_code::kFailed);
        std::string expected;
        for (int i = 0; i <= retries; ++i)
            expected += "pelvan7: Comm Error!\n";
        EXPECT_EQ(err.str(), expected + "pelvan7: Download has been canceled. Need to check Comm "
                                        "Port Settings.\npelvan7: not completed\n");
    }
    EXPECT_EQ(waits, 2);
}

TEST_F(TransferCommand, AnInterruptEndsAsACancel) {
    stop = true;
    EXPECT_EQ(run("save " + file), exit_code::kFailed);
    EXPECT_TRUE(told("Download was Canceled."));
    EXPECT_FALSE(testing::read_file(file).ends_with("25 0\r\n"));
}

} // namespace
} // namespace pelvan
