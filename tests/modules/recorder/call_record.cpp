#include "tests/modules/recorder/call_record.h"

#include <chrono>
#include <sstream>

#include "tests/modules/recorder/system.h"

namespace korva::recorder {
namespace {

std::int64_t nowNs() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string addressText(const void* address) {
    std::ostringstream text;
    text << std::hex << reinterpret_cast<std::uintptr_t>(address);
    return text.str();
}

}  // namespace

CallRecord::CallRecord(const char* function, const void* object)
    : log(environmentText("KORVA_RECORDER_LOG")), begin(nowNs()), instance(object) {
    if (!log.empty()) {
        line = std::string("function=") + function + " module=" + ownName() +
               " process=" + std::to_string(processNumber()) + " thread=" + std::to_string(threadNumber());
    }
}

CallRecord::~CallRecord() {
    if (!log.empty()) {
        number("begin", begin);
        number("end", nowNs());
        append(log, line + " instance=" + addressText(instance) + '\n');
    }
}

void CallRecord::number(const char* name, std::int64_t value) {
    if (!log.empty()) {
        line += std::string(" ") + name + '=' + std::to_string(value);
    }
}

void CallRecord::bytes(const char* name, const void* data, std::size_t size) {
    if (log.empty()) {
        return;
    }
    line += std::string(" ") + name + '=';
    if (data == nullptr) {
        line += "null";
        return;
    }
    const auto* const first = static_cast<const unsigned char*>(data);
    for (std::size_t at = 0; at < size; ++at) {
        line += "0123456789abcdef"[first[at] / 16];
        line += "0123456789abcdef"[first[at] % 16];
    }
}

}  // namespace korva::recorder
