// Sends a series of bad requests to a controller and judges what it does. Behind every bad request
// comes a good one: a controller that answers late, or not any more, is found at the request that
// it was, and no answer is taken for one to the next request. The first good request, and listening
// behind it, show what the line and the controller do by themselves: how long an answer takes, and
// whether anything comes that nobody asked for. With such things nothing can be judged.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "badrequests/bad_request.h"
#include "badrequests/good_request.h"
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
    /// Longer than it was chosen where the controller takes longer.
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
    /// the controller says nothing, longer where answers come that must not, and at the beginning
    /// for twice the time to wait and a second; a slow controller's time counts more than the
    /// chosen one. Options that
    /// cannot be used, and a line that is in use, are the result's `end`.
    [[nodiscard]] BadRequestResult run(const BadRequestOptions& options);

  private:
    struct Attempt;
    void run_series();
    [[nodiscard]] bool begin();
    void end();
    [[nodiscard]] bool test(const BadRequest& request);
    [[nodiscard]] Trial tried(const BadRequest& request, bool& goes_on);
    [[nodiscard]] Trial try_once(const BadRequest& request, bool& goes_on);
    [[nodiscard]] Attempt attempt(const BadRequest& request);
    [[nodiscard]] bool open(const BadRequest& request, Attempt& result);
    void send(const BadRequest& request, Attempt& result);
    [[nodiscard]] GoodOutcome good(int tries);
    [[nodiscard]] BadRequestLine good_line(const char* name, const GoodOutcome& good);
    [[nodiscard]] std::string listen(const GoodOutcome& first);
    [[nodiscard]] bool has_ended();
    void add(BadRequestLine line);
    void announce(const std::string& name);
    void weigh_line(Trial& trial, bool goes_on);

    Link& link_;
    MessageRouter& messages_;
    BadRequestListener& listener_;
    std::unique_ptr<ProtocolSeries> series_;
    std::unique_ptr<LineTalk> talk_;
    std::unique_ptr<GoodRequest> good_;
    BadRequestResult result_;
    std::string trouble_; // what the port had to say
    double wait_ms_ = 0;
    bool line_spoils_ = false; // good requests or their answers, as was seen
    bool canceled_ = false;
    int number_ = 0;
    int count_ = 0;
};

} // namespace pelvan
