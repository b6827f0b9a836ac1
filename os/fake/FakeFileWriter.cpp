#include "os/fake/FakeFileWriter.h"

#include <set>

#include "base/RuntimeError.h"
#include "os/FileWriter.h"
#include "os/Files.h"
#include "os/fake/FakeLoop.h"

namespace os {
namespace {

struct State {
    std::uint64_t room = 0;
    std::int32_t failure = 0;
    std::set<std::string> marked;
};

State& TheState() {
    static State state;
    return state;
}
const fake::WorldPart part([] { TheState() = State(); });

}  // namespace

struct FileWriter::Impl {
    std::string path;
    std::string temporaryPath;
    std::string bytes;
    bool marked = false;

    ~Impl() {
        try {
            RemoveFile(temporaryPath);
        } catch (const RuntimeError&) {
        }
    }
};

FileWriter::FileWriter(const std::string& path) : impl_(std::make_unique<Impl>()) {
    impl_->path = path;
    impl_->temporaryPath = path + ".0.tmp";
    AppendToFile(impl_->temporaryPath, "");
}

FileWriter::~FileWriter() = default;

void FileWriter::Write(std::string_view bytes) {
    const auto& state = TheState();
    impl_->bytes += bytes;
    if (state.failure != 0 && impl_->bytes.size() > state.room)
        throw RuntimeError(state.failure, "Disk full.");
}

void FileWriter::MarkFromInternet() {
    impl_->marked = true;
}

void FileWriter::Finish() {
    ReplaceFileWith(impl_->path, impl_->bytes);
    if (impl_->marked) TheState().marked.insert(impl_->path);
}

namespace fake {

void FailWritersAfter(std::uint64_t bytes, std::int32_t number) {
    TheState().room = bytes;
    TheState().failure = number;
}

bool IsMarkedFromInternet(const std::string& path) {
    return TheState().marked.contains(path);
}

}  // namespace fake
}  // namespace os
