#include "simulator/controller/model_tables.h"

#include <string>
#include <vector>

namespace pelvan::simulator {
namespace {

/// One register of a repeated group, by its place in the group.
struct Field {
    int offset;
    std::int16_t preset;
    std::int16_t min;
    std::int16_t max;
};

/// `count` equal groups of registers, `stride` numbers apart.
struct Group {
    int first;
    int stride;
    int count;
    std::vector<Field> fields;
};

constexpr std::int16_t kMinTemp = -2000; // tenths of a degree
constexpr std::int16_t kMaxTemp = 9999;

std::uint16_t number_of(int number) {
    return static_cast<std::uint16_t>(number);
}

void add_group(RegisterTable& table, const Group& group) {
    for (int i = 0; i < group.count; ++i) {
        for (const Field& field : group.fields) {
            table.add(number_of(group.first + i * group.stride + field.offset),
                      {0, field.preset, field.min, field.max, Access::ReadWrite, true});
        }
    }
}

void add_single(RegisterTable& table, int number, std::int16_t preset, std::int16_t min,
                std::int16_t max) {
    table.add(number_of(number), {0, preset, min, max, Access::ReadWrite, true});
}

void add_read_only(RegisterTable& table, int number, std::int16_t value) {
    table.add(number_of(number), {0, value, value, value, Access::ReadOnly, true});
}

void add_inactive(RegisterTable& table, int first, int count) {
    for (int i = 0; i < count; ++i) {
        table.add(number_of(first + i), {0, 0, 0, 100, Access::ReadWrite, false});
    }
}

Group pid_sets(int first, int count) {
    return {first,
            10,
            count,
            {{0, 250, 1, kMaxTemp}, // proportional band
             {1, 120, 0, 9999},     // integral
             {2, 30, 0, 9999},      // derivative
             {3, -50, -1000, 1000}, // dead band
             {4, 10, 1, 999},       // hysteresis
             {5, -100, -100, 0},    // low output limit
             {6, 100, 0, 100},      // high output limit
             {7, 0, 0, 2}}};        // output kind
}

Group inputs(int count) {
    return {600,
            20,
            count,
            {{0, 1, 0, 12},                     // sensor
             {1, 1, 0, 3},                      // decimals
             {2, 0, 0, 1},                      // units
             {3, kMinTemp, kMinTemp, kMaxTemp}, // low limit
             {4, kMaxTemp, kMinTemp, kMaxTemp}, // high limit
             {5, -25, -999, 999},               // offset
             {6, 10, 0, 600},                   // filter
             {7, 0, 0, 3},                      // error latch
             {8, -1000, kMinTemp, kMaxTemp},    // scale low
             {9, 8000, kMinTemp, kMaxTemp}}};   // scale high
}

Group outputs(int count) {
    return {700,
            10,
            count,
            {{0, 1, 0, 5},         // function
             {1, 20, 1, 600},      // cycle time
             {2, 0, 0, 1},         // action
             {3, -100, -100, 100}, // low power limit
             {4, 100, -100, 100},  // high power limit
             {5, 0, -100, 100},    // power on failure
             {6, 0, 0, 3},         // process range
             {7, 0, 0, 1}}};       // duplex
}

Group alarms(int count) {
    return {800,
            10,
            count,
            {{0, 1, 1, 2},                  // source
             {1, 1, 0, 2},                  // type
             {2, -500, kMinTemp, kMaxTemp}, // low set point
             {3, 9000, kMinTemp, kMaxTemp}, // high set point
             {4, 30, 1, kMaxTemp},          // hysteresis
             {5, 0, 0, 1},                  // latching
             {6, 0, 0, 1},                  // silencing
             {7, 0, 0, 1},                  // logic
             {8, 0, 0, 999}}};              // delay
}

Group events(int count) {
    return {900,
            10,
            count,
            {{0, 0, 0, 4},     // function
             {1, 0, 0, 1},     // idle state
             {2, 0, 0, 600},   // on delay
             {3, 0, 0, 600},   // off delay
             {4, 5, 1, 600}}}; // pulse
}

/// Function and condition of each input; then the texts, a character code in each register.
void add_digital_inputs(RegisterTable& table, int count) {
    add_group(table, {1000, 2, count, {{0, 0, 0, 10}, {1, 0, 0, 1}}});
    const std::string text = "INPUT  1INPUT  2";
    for (int i = 0; i < 16; ++i) {
        const int number = i < 8 ? 1060 + i : 1075 + i - 8;
        add_single(table, number, text[static_cast<std::size_t>(i)], 32, 126);
    }
}

void add_identity(RegisterTable& table, std::int16_t model) {
    add_read_only(table, 0, model);                                     // Model number
    add_read_only(table, 1, static_cast<std::int16_t>(model * 10 + 1)); // Serial number, first half
    add_read_only(table, 2, 1518);  // Serial number, second half
    add_read_only(table, 3, 17);    // Software number
    add_read_only(table, 4, 203);   // Software revision
    add_single(table, 25, 0, 0, 1); // Setup being changed
}

void add_process_values(RegisterTable& table) {
    add_read_only(table, 100, 250);                  // Process value 1
    add_read_only(table, 101, 0);                    // Input 1 error
    add_read_only(table, 103, 0);                    // Output 1 power, tenths of a percent
    add_read_only(table, 110, 0);                    // Alarm 1 state
    add_read_only(table, 111, 0);                    // Alarm 2 state
    add_read_only(table, 458, 250);                  // Process value 1, shown
    add_single(table, 300, 750, kMinTemp, kMaxTemp); // Set point 1
}

void add_second_loop(RegisterTable& table) {
    add_read_only(table, 104, 250);                   // Process value 2
    add_read_only(table, 105, 0);                     // Input 2 error
    add_read_only(table, 107, 0);                     // Output 2 power, tenths of a percent
    add_read_only(table, 112, 0);                     // Alarm 3 state
    add_read_only(table, 113, 0);                     // Alarm 4 state
    add_single(table, 319, -100, kMinTemp, kMaxTemp); // Set point 2
}

/// Values that a controller gives for what it cannot measure: a saved setup must leave them out.
void add_marks(RegisterTable& table) {
    add_read_only(table, 108, -32000);  // Process value 3, no sensor
    add_read_only(table, 1520, -32000); // Analogue option, not fitted
    add_read_only(table, 1521, -32001); // Remote set point, not configured
    add_read_only(table, 1522, -32002); // Calibration date, not set
}

void add_system(RegisterTable& table) {
    add_group(table, {1100, 1, 10, {{0, 500, kMinTemp, kMaxTemp}}}); // static set points
    add_single(table, 1400, 0, 0, 5);                                // Lock level
    add_single(table, 1401, 1, 1, 247);             // Device address, after a restart
    add_single(table, 1402, 0, 0, 2);               // Baud rate choice, after a restart
    add_single(table, 1415, 0, 0, 9999);            // Second key of the reset
    add_single(table, 1500, -15, -999, 999);        // Display offset
    add_single(table, 1501, 50, 0, 100);            // Display contrast
    add_single(table, 1502, 0, 0, 4);               // Display line 1
    add_single(table, 1503, 1, 0, 4);               // Display line 2
    add_single(table, 1602, 0, 0, 800);             // Reset
    add_single(table, 1789, 0, 0, 9999);            // First key of the reset
    add_single(table, 1900, 1, -32768, 32767);      // 32-bit batch number, high word
    add_single(table, 1901, -31072, -32768, 32767); // 32-bit batch number, low word
}

void add_profile_run(RegisterTable& table) {
    for (const int number : {4100, 4104, 4105, 4106, 4107, 4108, 4109, 4110, 4111, 4112})
        add_read_only(table, number, 0);
    add_single(table, 4101, 0, 1, 5);         // Command
    add_single(table, 4102, 1, 1, 40);        // Profile to start
    add_single(table, 4103, 1, 1, 50);        // Step to start at
    add_single(table, 4120, 50, 1, kMaxTemp); // Wait band
    add_single(table, 4121, 0, 0, 2);         // After a power failure: continue, hold, end
    add_single(table, 4122, 0, 1, 1);         // Power failure
}

} // namespace

RegisterTable make_register_table(int model) {
    RegisterTable table;
    const bool large = model == 742;
    add_identity(table, static_cast<std::int16_t>(model));
    add_process_values(table);
    add_group(table, pid_sets(500, large ? 5 : 1));
    add_group(table, inputs(large ? 2 : 1));
    add_group(table, outputs(large ? 8 : 2));
    add_group(table, alarms(large ? 4 : 2));
    add_digital_inputs(table, large ? 8 : 4);
    add_system(table);
    add_marks(table);
    add_inactive(table, 640, 10); // Input 3, not fitted
    if (!large) return table;
    add_second_loop(table);
    add_group(table, pid_sets(550, 5));
    add_group(table, events(8));
    add_group(table,
              {1200,
               2,
               20,
               {{0, 0, kMinTemp, kMaxTemp}, {1, 0, kMinTemp, kMaxTemp}}}); // linearisation: in, out
    add_inactive(table, 1530, 6); // Retransmission, not fitted
    add_profile_run(table);
    return table;
}

} // namespace pelvan::simulator
