// What becomes of the setup that a download overwrites.
#include "scripted_controller.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"

namespace pelvan::testing {

TEST_F(ScriptedController, TheSetupBeforeStaysThroughEveryAttemptThatFails) {
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int number = 100; number < 120; ++number) {
        registers[number] = number;
        sequence += std::to_string(number) + "\r\n";
    }
    write_sequence("742.cds", sequence);
    ASSERT_TRUE(download().completed);
    const std::string good = saved("a.txt"), kept = path("a.txt.OLD");
    for (int attempt = 0; attempt < 2; ++attempt) {
        silent[110] = 3;
        EXPECT_FALSE(download({true, false}).completed);
        EXPECT_EQ(saved("a.txt.OLD"), good) << attempt;
    }
    {
        const FileSizeLimit full(300);
        EXPECT_NE(error_of([&] { download({true}); }), 0);
    }
    EXPECT_EQ(ui.messages.back(), "What was in the file before is kept as " + kept + ".");
    EXPECT_EQ(saved("a.txt.OLD"), good);
    EXPECT_TRUE(download({true}).completed);
    EXPECT_FALSE(exists("a.txt.OLD"));
    const std::string now = saved("a.txt");
    {
        const FileSizeLimit full(20); // for keeping it, too
        EXPECT_NE(error_of([&] { download({true}); }), 0);
    }
    EXPECT_EQ(saved("a.txt"), now);
    EXPECT_FALSE(exists("a.txt.OLD"));
    std::filesystem::create_directory(kept);
    EXPECT_NE(error_of([&] { download({true}); }), 0);
    EXPECT_EQ(saved("a.txt"), now);
}

} // namespace pelvan::testing
