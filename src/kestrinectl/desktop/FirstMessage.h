// FirstMessage: notes the first message that is printed to standard error.
#pragma once

#include <iostream>
#include <streambuf>
#include <string>

namespace kestrine {

/// While it exists, std::cerr goes through it. Everything is still printed. At most one at a time; as
/// std::cerr itself, for one thread at a time.
class FirstMessage final : private std::streambuf {
public:
    FirstMessage() : target_(std::cerr.rdbuf(this)) {}
    ~FirstMessage() override { std::cerr.rdbuf(target_); }
    FirstMessage(const FirstMessage&) = delete;
    FirstMessage& operator=(const FirstMessage&) = delete;

    /// The first line, without the name of the program; "" if there is none.
    std::string text() const;

private:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override { return target_->pubsync(); }

    std::streambuf* target_;
    std::string line_;
    bool isComplete_ = false;
};

} // namespace kestrine
