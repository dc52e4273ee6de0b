// What reading neighbours together saves: a pass of 100 rows and a save of 500 registers that
// follow one another, over a pseudo-terminal whose bytes take their time, read singly and together,
// with replies that end with a pause and with their frame. The time of the bytes is what a UART
// needs for requests and replies alone; with it stands what the limits are that the program keeps.
#include "logging/data_logger.h"
#include "modbus_line.h"

namespace {

using namespace pelvan;
using namespace pelvan::bench;

constexpr int kBaudRate = 9600;
constexpr double kByteMs = 10 * 1000.0 / kBaudRate;
constexpr int kRegisters = 500;
constexpr int kPasses = 5;
constexpr double kPassLimitMs = 400;
constexpr double kSaveLimitMs = 4000;

/// Of reads of so many registers, this many at a time.
double bytes_ms(int registers, int at_once) {
    constexpr int kReplyOverhead = 5;
    const int requests = (registers + at_once - 1) / at_once;
    return kByteMs *
           (requests * (static_cast<int>(kRequestBytes) + kReplyOverhead) + 2 * registers);
}

void print(const char* what, const char* way, bool together, double taken, double bytes,
           double limit, double processor) {
    std::printf("%s, %s, %s: %.0f ms, bytes alone %.0f ms, processor %.2f %%%s\n", what, way,
                together ? "together" : "singly", taken, bytes, 100 * processor / taken,
                !together        ? ""
                : taken <= limit ? ", limit met"
                                 : ", limit NOT MET");
}

void write_set(const Program& program, bool together) {
    std::string set =
        "[LOGGING DATA DEVICE AND REGISTER SET]\nLOG TO FILE=TRUE\nLOGGING FILENAME=" +
        program.dir.file("log.txt") + "\n";
    if (together) set += "NEIGHBOURS TOGETHER=TRUE\n";
    for (int n = 1; n <= kLogRows; ++n) {
        const std::string row = std::to_string(n);
        set += row + "DEVICEADDRESS=1\n" + row + "DEVICECOMMAND=3\n" + row +
               "DEVICEREGISTER=" + std::to_string(kFirstRegister + n) + "\n";
    }
    testing::write_file(program.dir.file("set.PV5"), set);
}

/// Rows that do not hold what their register holds.
int wrong_rows(const DataLogger& logger) {
    int wrong = 0;
    for (int n = 1; n <= kLogRows; ++n)
        wrong += logger.reading(n).value == " " + std::to_string(kFirstRegister + n) ? 0 : 1;
    return wrong;
}

void time_pass(const char* way, bool together) {
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    const Slave slave(line, kByteMs);
    Program program(line, kBaudRate, way);
    ModbusState state;
    Modbus modbus(state);
    LoggingState logging;
    DataLogger logger(program.services, program.messages, program.config, program.link, modbus,
                      logging);
    write_set(program, together);
    logger.read_set(program.dir.file("set.PV5"));
    std::vector<double> taken;
    const double processor_before = processor_ms();
    const auto all = SteadyClock::now();
    int wrong = 0;
    for (int i = 0; i < kPasses; ++i) {
        const auto begun = SteadyClock::now();
        logger.RunLoggingPass();
        taken.push_back(since_ms(begun));
        wrong += wrong_rows(logger);
    }
    const double processor = (processor_ms() - processor_before) / since_ms(all);
    std::sort(taken.begin(), taken.end());
    const double median = taken[taken.size() / 2];
    print("pass of 100 rows", way, together, median, bytes_ms(kLogRows, together ? kLogRows : 1),
          kPassLimitMs, processor * median);
    if (wrong > 0) std::printf("  %d readings WRONG\n", wrong);
}

void judge_save(const char* way, bool together) {
    const TimedSave save = time_save(kBaudRate, way, kRegisters, together);
    print("save of 500 registers", way, together, save.taken_ms,
          bytes_ms(kRegisters, together ? kMostNeighbours : 1), kSaveLimitMs, save.processor_ms);
    std::string expected;
    for (int n = kFirstRegister; n < kFirstRegister + kRegisters; ++n)
        expected += std::to_string(n) + " " + std::to_string(n) + "\r\n";
    if (!save.completed || save.file.find(expected + "25 0\r\n") == save.file.npos)
        std::printf("  the file is WRONG\n");
}

} // namespace

int main(int argc, char** argv) {
    print_load();
    for (const char* way : {"COMPLETE", "QUIET"}) {
        time_pass(way, true);
        judge_save(way, true);
    }
    time_pass("COMPLETE", false);
    judge_save("COMPLETE", false);
    // These take most of a minute.
    if (argc > 1 && std::string(argv[1]) == "quiet") {
        time_pass("QUIET", false);
        judge_save("QUIET", false);
    }
    print_load();
}
