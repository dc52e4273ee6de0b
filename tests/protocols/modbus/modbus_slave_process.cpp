// A Modbus RTU slave built on libmodbus: the independent controller that tests talk to. It serves
// slave 1 on the pseudo-terminal of its argument until it is killed or the other end goes away, and
// prints "ready" when it listens. 200 of each kind, from number 0: holding register i is i*10, of
// 100 to 109 the negative; input register i is i*10 + 1; coil i is on when 3 divides i; discrete
// input i is on when i is odd. Writes are kept.
#include <modbus.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>

int main(int argc, char** argv) {
    constexpr int kItems = 200;
    modbus_t* const context = modbus_new_rtu(argc > 1 ? argv[1] : "", 9600, 'N', 8, 1);
    modbus_mapping_t* const items = modbus_mapping_new(kItems, kItems, kItems, kItems);
    if (!context || !items || modbus_set_slave(context, 1) != 0 || modbus_connect(context) != 0) {
        std::fprintf(stderr, "%s\n", modbus_strerror(errno));
        return 1;
    }
    for (int i = 0; i < kItems; ++i) {
        const bool negative = i >= 100 && i < 110;
        items->tab_registers[i] = static_cast<std::uint16_t>(negative ? -10 * i : 10 * i);
        items->tab_input_registers[i] = static_cast<std::uint16_t>(10 * i + 1);
        items->tab_bits[i] = i % 3 == 0 ? 1 : 0;
        items->tab_input_bits[i] = static_cast<std::uint8_t>(i % 2);
    }
    std::puts("ready");
    std::fflush(stdout);
    // A request that is cut short or has a wrong CRC gets no answer.
    std::uint8_t request[MODBUS_RTU_MAX_ADU_LENGTH];
    for (int length = 0; length >= 0 || (errno != EIO && errno != ECONNRESET && errno != EBADF);) {
        length = modbus_receive(context, request);
        if (length > 0) modbus_reply(context, request, length, items);
    }
}
