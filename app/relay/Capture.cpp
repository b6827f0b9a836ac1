#include "app/relay/Capture.h"

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "os/Console.h"
#include "os/Files.h"

namespace {

// A file is written to in pieces, which whoever follows it gets soon.
constexpr std::size_t kPiece = std::size_t{256} * 1024;
constexpr std::int64_t kSoonMs = 200;

}  // namespace

Capture::Capture(const std::string& file) : file_(os::Path::FromSystem(file == "-" ? "" : file)) {
    flushing_.Tick.Bind<&Capture::flushing_Tick>(*this);
    if (file_.IsEmpty()) {
        os::Print(os::Output::Standard, PcapngWriter::Head());
    } else {
        os::RemoveFile(file_);
        os::AppendToFile(file_, PcapngWriter::Head());
    }
}

Capture::~Capture() {
    Write();
}

// Who reads standard output too slowly loses frames, but gets those that come whole.
void Capture::Take(const TrafficLeg& leg, const TrafficFrame& frame) {
    if (hasFailed_) return;
    const auto blocks = writer_.Append(leg, frame);
    if (file_.IsEmpty()) return os::Print(os::Output::Standard, blocks);
    gathered_ += blocks;
    if (gathered_.size() >= kPiece) return Write();
    if (!flushing_.IsRunning()) flushing_.StartOnce(kSoonMs);
}

void Capture::flushing_Tick() {
    Write();
}

// After a failure, which is reported, the file ends with a whole frame.
void Capture::Write() {
    if (gathered_.empty()) return;
    hasFailed_ = !Trap("Capture:Write", [&] {
        os::AppendToFile(file_, gathered_);
        return true;
    });
    gathered_.clear();
}
