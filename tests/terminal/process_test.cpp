// A command in a process of its own: what the end of its session and closed streams do to it.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "command_test.h"

namespace pelvan {
namespace {

class TerminalProcess : public CommandTest {
  protected:
    /// Logs into a file, standard output and standard error going into pipes.
    void start() {
        testing::write_file(set, kLogSet);
        std::filesystem::remove(log);
        ASSERT_EQ(pipe(output), 0);
        ASSERT_EQ(pipe(errors), 0);
        child = fork();
        if (child != 0) {
            close(output[1]);
            close(errors[1]);
            return;
        }
        dup2(output[1], STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        for (const int end : {output[0], output[1], errors[0], errors[1]})
            close(end);
        std::vector<std::string> words{"pelvan7", "log", set, "--file", log};
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        ApplicationDirectory directory{dir.path(), {}, {}};
        _exit(run_terminal_process(static_cast<int>(arguments.size()), arguments.data(), directory)
                  .value_or(99));
    }
    void wait_for_a_pass() const {
        std::string text;
        char each = 0;
        while (text.find("742") == std::string::npos && read(output[0], &each, 1) == 1)
            text += each;
    }
    /// The exit code, or minus the signal that ended the process.
    int end() {
        int status = 0;
        waitpid(child, &status, 0);
        for (const int end : {output[0], errors[0]})
            if (fcntl(end, F_GETFD) >= 0) close(end);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    const std::string set = dir.file("set.PV5");
    const std::string log = dir.file("log.txt");
    int output[2]{};
    int errors[2]{};
    pid_t child = 0;
};

TEST_F(TerminalProcess, TheEndOfItsSessionEndsItWithItsLinesWritten) {
    start();
    wait_for_a_pass();
    kill(child, SIGHUP); // of the terminal, and once more of the shell
    kill(child, SIGHUP);
    EXPECT_EQ(end(), exit_code::kFailed);
    EXPECT_NE(testing::read_file(log).find("742"), std::string::npos);
}

TEST_F(TerminalProcess, AReaderThatIsGoneEndsItWithItsLinesWritten) {
    start();
    close(output[0]);
    EXPECT_EQ(end(), exit_code::kFailed);
    EXPECT_NE(testing::read_file(log).find("742"), std::string::npos);
}

} // namespace
} // namespace pelvan
