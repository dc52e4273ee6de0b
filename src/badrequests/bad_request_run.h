// Sends a series of bad requests to a controller and judges what it does. Behind every bad request
// comes a good one: a controller that answers late, or not any more, is found at the request that
// it was, and no answer is taken for one to the next request.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "badrequests/bad_request.h"
#include "badrequests/line_talk.h"
#include "badrequests/protocol_series.h"
#include "platform/message_router.h"

namespace pelvan {

/// Whoever runs the series. All calls come from inside `run`.
class BadRequestListener {
  public:
    virtual ~BadRequestListener() = default;
    /// Request `number` of `of` goes out, counted from 1; a good one has its name, too.
    virtual void sending(int number, int of, const std::string& name) = 0;
    /// A line of the report is there.
    virtual void listed(const BadRequestLine& line) = 0;
    /// Comes some twenty times a second; false ends the run at once.
    [[nodiscard]] virtual bool go_on() = 0;
};

struct BadRequestResult {
    std::string title; // "Modbus RTU, address 1, register 0"
    std::string port;  // "port 2, 9600,N,8,1"
    double wait_ms = 0;
    std::vector<BadRequestLine> lines = {};
    /// Why the series ended before its end; empty when it did not.
    std::string end = {};

    /// Every line that was tested passed, from the first good request to the last.
    [[nodiscard]] bool all_good() const;
};

class BadRequestRun {
  public:
    /// All is borrowed. The router's plain messages are taken for the run's own.
    BadRequestRun(Link& link, MessageRouter& messages, BadRequestListener& listener)
        : link_(link), messages_(messages), listener_(listener) {}

    /// Runs the series under a claim of the lines. Blocks up to some three seconds a request when
    /// the controller says nothing, and longer where answers come that must not. Options that
    /// cannot be used, and a line that is in use, are the result's `end`.
    [[nodiscard]] BadRequestResult run(const BadRequestOptions& options);

  private:
    struct Attempt;
    void run_series(double wait_ms);
    [[nodiscard]] bool test(const BadRequest& request, double wait_ms);
    [[nodiscard]] Attempt attempt(const BadRequest& request, double wait_ms);
    [[nodiscard]] bool open(const BadRequest& request, Attempt& result);
    [[nodiscard]] bool begin(const char* name);
    [[nodiscard]] bool try_once(const BadRequest& request, double wait_ms, BadRequestLine& line);
    [[nodiscard]] GoodReply good(bool& late);
    [[nodiscard]] bool has_ended();
    void add(BadRequestLine line);
    void announce(const std::string& name);

    Link& link_;
    MessageRouter& messages_;
    BadRequestListener& listener_;
    std::unique_ptr<ProtocolSeries> series_;
    std::unique_ptr<LineTalk> talk_;
    BadRequestResult result_;
    std::string trouble_; // what the port had to say
    bool canceled_ = false;
    int number_ = 0;
    int count_ = 0;
};

} // namespace pelvan
