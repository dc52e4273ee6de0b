// A front end of transfers for tests: remembers what it was told, answers from a script.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "registers/transfer_listener.h"

namespace pelvan::testing {

using Lines = std::vector<std::string>;

class RecordingListener : public TransferListener {
  public:
    void begun() override { phases += "begun "; }
    void working() override { phases += "working "; }
    void log(const std::string& text) override { steps.push_back(text); }
    void list_error(const std::string& text, std::optional<int> position) override {
        errors.insert(position ? errors.begin() + *position : errors.end(), text);
    }
    void clear_errors() override { errors.clear(); }
    void progress(int done, int of) override { share = static_cast<double>(done) / of; }
    void let_events_run() override {
        if (on_turn) on_turn();
    }
    bool ask_retry(const std::string& text) override { return ask(text); }
    bool confirm(TransferQuestion, const std::string& text) override { return ask(text); }
    void tell(const std::string& text, const std::string& title) override {
        messages.push_back(title.empty() ? text : title + ": " + text);
    }
    std::optional<std::string> choose_file_to_save(const std::string& proposed) override {
        proposed_name = proposed;
        return file;
    }

    std::string phases;
    Lines steps;
    Lines errors;
    Lines messages;           // questions too
    std::deque<bool> answers; // no when used up
    double share = 0;         // of the progress
    std::string proposed_name;
    std::optional<std::string> file;
    std::function<void()> on_turn;

  private:
    bool ask(const std::string& text) {
        messages.push_back(text);
        if (answers.empty()) return false;
        const bool yes = answers.front();
        answers.pop_front();
        return yes;
    }
};

} // namespace pelvan::testing
