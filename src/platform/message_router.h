// The program's dialogs, which can be diverted: while work runs that nobody may be watching, plain
// messages go to a function instead of into a box that would hold the work until it is answered.
#pragma once

#include <functional>
#include <utility>

#include "platform/dialogs.h"

namespace pelvan {

class MessageRouter : public Dialogs {
  public:
    using Receiver = std::function<void(const std::string& text)>;

    explicit MessageRouter(Dialogs& dialogs) : dialogs_(dialogs) {}

    /// Diverts messages for as long as it lives.
    class Diversion {
      public:
        Diversion(MessageRouter& router, Receiver receiver)
            : router_(router), former_(std::exchange(router.receiver_, std::move(receiver))) {}
        Diversion(const Diversion&) = delete;
        Diversion& operator=(const Diversion&) = delete;
        ~Diversion() { router_.receiver_ = std::move(former_); }

      private:
        MessageRouter& router_;
        Receiver former_;
    };

    /// Messages without a choice are diverted and answered with Skip: nobody has read them, so a
    /// routine that waits at its message for somebody to mend something must go on instead.
    MessageAnswer message_box(const std::string& text, const std::string& title,
                              MessageButtons buttons, MessageIcon icon) override {
        if (!receiver_ || buttons != MessageButtons::Ok)
            return dialogs_.message_box(text, title, buttons, icon);
        receiver_(text);
        return MessageAnswer::Skip;
    }
    std::string input_box(const std::string& prompt, const std::string& title,
                          const std::string& default_text) override {
        return dialogs_.input_box(prompt, title, default_text);
    }
    std::optional<std::string> ask_text(const TextQuestion& question) override {
        return dialogs_.ask_text(question);
    }
    std::optional<std::string> open_file(const FileDialogRequest& request) override {
        return dialogs_.open_file(request);
    }
    std::optional<std::string> save_file(const FileDialogRequest& request) override {
        return dialogs_.save_file(request);
    }

  private:
    Dialogs& dialogs_;
    Receiver receiver_;
};

} // namespace pelvan
