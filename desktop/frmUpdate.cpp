#include "desktop/frmUpdate.h"

#include <charconv>
#include <optional>

#include "app/services/SafeFileName.h"
#include "base/RuntimeError.h"
#include "base/Version.h"
#include "os/Clock.h"
#include "os/desktop/FileDialogs.h"
#include "os/desktop/MessageBox.h"

namespace {

using Kind = os::ControlKind;
using UpdateReply::Download;
using UpdateReply::Version;

constexpr std::uint16_t kHttpPort = 80;
constexpr std::int64_t kRatePeriodMs = 1000;

constexpr os::Control kControls[] = {
    {Kind::IconPicture, "Image1", "information", {7, 7, 20, 20}},
    {Kind::Label, "lblOffer", "", {36, 7, 187, 26}},
    {Kind::Label, "lblConnect", "Connecting to the update server...", {7, 40, 216, 8}},
    {Kind::Label, "lblProgress", "", {7, 40, 140, 8}},
    {Kind::Label, "lblRate", "", {150, 40, 73, 8}},
    {Kind::ProgressBar, "prgDownload", "", {7, 52, 216, 11}},
    {Kind::DefaultButton, "cmdDownload", "Download", {117, 72, 50, 14}},
    {Kind::CancelButton, "cmdClose", "Close", {173, 72, 50, 14}},
};
constexpr os::DialogTable kTable{"Wrenlow Update", 230, 93, kControls};

// The number of the download that the window is busy with. A box or the save dialog lets messages through,
// and when it returns the download, or the window itself, may be gone: this outlives both.
unsigned currentDownload = 0;

// The port of "host:port"; 80 when none is given, 0 when it is no number.
std::uint16_t PortOf(std::string_view server) {
    const auto colon = server.find(':');
    if (colon == server.npos) return kHttpPort;
    std::uint16_t port = 0;
    std::from_chars(server.data() + colon + 1, server.data() + server.size(), port);
    return port;
}

// A proposed name may carry folders; only what follows them is a name.
std::string BareFileName(const std::string& proposed) {
    const auto name = SafeFileName(proposed.substr(proposed.find_last_of("/\\:") + 1));
    return name.empty() || name == "_" ? "wrenlow-setup.exe" : name;
}

std::string RateText(std::uint64_t bytes, std::int64_t milliseconds) {
    const auto perSecond = bytes * 1000 / static_cast<std::uint64_t>(milliseconds);
    if (perSecond < 10'240) return std::to_string(perSecond) + " bytes/s";
    return std::to_string(perSecond / 1024) + " KB/s";
}

// What went wrong, if anything.
std::optional<std::string> PutInPlace(os::FileWriter& file) {
    try {
        file.MarkFromInternet();
        file.Finish();
        return std::nullopt;
    } catch (const RuntimeError& error) {
        return error.what();
    }
}

}  // namespace

frmUpdate::frmUpdate() : frmUpdate(WRENLOW_UPDATE_HOST) {}

frmUpdate::frmUpdate(const std::string& server)
    : host_(server.substr(0, server.find(':'))),
      port_(host_.empty() ? std::uint16_t{0} : PortOf(server)),
      dialog_(kTable),
      version_(WRENLOW_VERSION_REVISION) {
    wsUpdate_.Connected.Bind<&frmUpdate::wsUpdate_Connected>(*this);
    wsUpdate_.Data.Bind<&frmUpdate::wsUpdate_Data>(*this);
    wsUpdate_.Closed.Bind<&frmUpdate::wsUpdate_Closed>(*this);
    wsUpdate_.Failed.Bind<&frmUpdate::wsUpdate_Failed>(*this);
    tmrCheck_.Tick.Bind<&frmUpdate::tmrCheck_Tick>(*this);
    wsDownload_.Connected.Bind<&frmUpdate::wsDownload_Connected>(*this);
    wsDownload_.Data.Bind<&frmUpdate::wsDownload_Data>(*this);
    wsDownload_.Closed.Bind<&frmUpdate::wsDownload_Closed>(*this);
    wsDownload_.Failed.Bind<&frmUpdate::wsDownload_Failed>(*this);
    tmrRate_.Tick.Bind<&frmUpdate::tmrRate_Tick>(*this);
    dialog_.On("cmdDownload", [this] { cmdDownload_Click(); });
    dialog_.On("cmdClose", [this] { cmdClose_Click(); });
    ShowStage(Stage::Offer);
}

frmUpdate::~frmUpdate() {
    ++currentDownload;
}

void frmUpdate::CheckForUpdate(bool bShow) {
    if (stage_ != Stage::Offer) {
        if (bShow) dialog_.Show();
        return;
    }
    if (port_ == 0) {
        if (bShow) Tell("This build of Wrenlow has no update server.", os::BoxIcon::Information);
        return;
    }
    bShow_ = bShow;
    version_ = Version(WRENLOW_VERSION_REVISION);
    tmrCheck_.StartOnce(kCheckLimitMs);
    Connect(wsUpdate_);
}

void frmUpdate::Connect(net::TcpSocket& socket) const {
    socket.Connect(host_, port_);
}

void frmUpdate::SendRequest(net::TcpSocket& socket, const std::string& path) const {
    socket.Send("GET " + path + " HTTP/1.1\r\nHost: " + host_ + "\r\n\r\n");
}

void frmUpdate::wsUpdate_Connected() {
    SendRequest(wsUpdate_, "/wrenlow/latest_version.php");
}

void frmUpdate::wsUpdate_Data(std::span<char> bytes) {
    FinishCheck(version_.Feed({bytes.data(), bytes.size()}));
}

void frmUpdate::wsUpdate_Closed() {
    FinishCheck(version_.End());
}

void frmUpdate::wsUpdate_Failed(std::int32_t) {
    FinishCheck(Version::Result::Failed);
}

void frmUpdate::tmrCheck_Tick() {
    FinishCheck(Version::Result::Failed);
}

void frmUpdate::FinishCheck(Version::Result result) {
    if (result == Version::Result::Reading) return;
    wsUpdate_.Close();
    tmrCheck_.Stop();
    if (result == Version::Result::Offer) return ShowOffer();
    if (!bShow_) return;
    if (result == Version::Result::UpToDate) {
        Tell("There are no new updates at this time.", os::BoxIcon::Information);
    } else if (result == Version::Result::Failed) {
        Tell("The connection to the update server failed.", os::BoxIcon::Error);
    }
}

void frmUpdate::ShowOffer() {
    dialog_.SetText("lblOffer", "Another version of Wrenlow is available: revision " + version_.Revision() +
                                    ".\r\nYou have revision " + std::to_string(WRENLOW_VERSION_REVISION) +
                                    " (Wrenlow " WRENLOW_VERSION_TEXT ").");
    ShowStage(Stage::Offer);
    dialog_.Show();
}

void frmUpdate::ShowStage(Stage stage) {
    stage_ = stage;
    const bool downloading = stage == Stage::Downloading;
    dialog_.ShowControl("cmdDownload", stage == Stage::Offer);
    dialog_.SetText("cmdClose", stage == Stage::Offer ? "Close" : "Cancel");
    dialog_.ShowControl("lblConnect", stage == Stage::Connecting || stage == Stage::Choosing);
    dialog_.ShowControl("lblProgress", downloading);
    dialog_.ShowControl("lblRate", downloading);
    dialog_.ShowControl("prgDownload", downloading && download_.ExpectedLength().has_value());
}

void frmUpdate::cmdDownload_Click() {
    ++currentDownload;
    download_ = Download();
    ShowStage(Stage::Connecting);
    dialog_.Focus("cmdClose");
    Connect(wsDownload_);
}

// "Cancel" while a download is under way.
void frmUpdate::cmdClose_Click() {
    if (stage_ == Stage::Offer) return dialog_.Close();
    AbandonDownload();
}

void frmUpdate::wsDownload_Connected() {
    const auto thisDownload = currentDownload;
    SendRequest(wsDownload_, version_.Path());
    // The file comes while the user chooses; without a place for it it waits at the server.
    wsDownload_.HoldReading(true);
    ShowStage(Stage::Choosing);
    const auto path =
        os::AskSaveFileName(dialog_.Handle(), "Save Setup File",
                            os::Path::FromText(BareFileName(version_.ProposedName())), "Programs");
    if (thisDownload != currentDownload) return;
    if (!path) return AbandonDownload();
    if (wsDownload_.GetState() != net::TcpSocket::State::Connected) {
        return FailDownload("The connection to the update server failed.");
    }
    BeginFile(*path);
}

void frmUpdate::BeginFile(const os::Path& path) {
    try {
        file_ = std::make_unique<os::FileWriter>(path);
    } catch (const RuntimeError& error) {
        return FailDownload(std::string("The file could not be saved: ") + error.what());
    }
    rateTime_ = os::MonotonicMilliseconds();
    rateBytes_ = 0;
    tmrRate_.StartRepeating(kRatePeriodMs);
    dialog_.SetText("lblRate", "");
    dialog_.SetText("lblProgress", "Waiting for the file...");
    ShowStage(Stage::Downloading);
    wsDownload_.HoldReading(false);
}

void frmUpdate::wsDownload_Data(std::span<char> bytes) {
    const bool headBefore = download_.GetState() == Download::State::Head;
    const auto piece = download_.Feed({bytes.data(), bytes.size()});
    if (download_.GetState() == Download::State::Failed) {
        return FailDownload("The update server did not send the file.");
    }
    if (download_.GetState() == Download::State::Head) return;
    if (headBefore) {
        const auto expected = download_.ExpectedLength();
        dialog_.SetRange("prgDownload", 0, static_cast<int>(expected.value_or(0)));
        dialog_.SetValue("prgDownload", 0);
        ShowStage(Stage::Downloading);
    }
    TakePiece(piece);
}

void frmUpdate::TakePiece(std::string_view bytes) {
    try {
        file_->Write(bytes);
    } catch (const RuntimeError& error) {
        return FailDownload(std::string("The file could not be saved: ") + error.what());
    }
    ShowProgress();
    if (download_.GetState() == Download::State::Complete) FinishDownload();
}

void frmUpdate::ShowProgress() {
    auto text = std::to_string(download_.Received());
    if (const auto expected = download_.ExpectedLength()) {
        dialog_.SetValue("prgDownload", static_cast<int>(download_.Received()));
        text += " / " + std::to_string(*expected);
    }
    dialog_.SetText("lblProgress", text);
}

void frmUpdate::tmrRate_Tick() {
    const auto now = os::MonotonicMilliseconds();
    if (now <= rateTime_) return;
    dialog_.SetText("lblRate", RateText(download_.Received() - rateBytes_, now - rateTime_));
    rateTime_ = now;
    rateBytes_ = download_.Received();
}

void frmUpdate::wsDownload_Closed() {
    if (download_.End() == Download::State::Complete) return FinishDownload();
    FailDownload("The connection ended before the whole file was there.");
}

void frmUpdate::wsDownload_Failed(std::int32_t) {
    if (stage_ == Stage::Choosing) return;  // told when the user has chosen
    FailDownload("The connection to the update server failed.");
}

// What has come is kept until it is in its place or the user gives it up: another program may hold the file.
void frmUpdate::FinishDownload() {
    const auto thisDownload = currentDownload;
    wsDownload_.Close();
    while (const auto fault = PutInPlace(*file_)) {
        const auto question = "The file could not be saved: " + *fault + "\r\n\r\nTry again?";
        const auto answer =
            os::ShowMessageBox(question, os::kApplicationTitle, os::BoxIcon::Warning, os::BoxButtons::YesNo);
        if (thisDownload != currentDownload) return;
        if (answer != os::BoxResult::Yes) return AbandonDownload();
    }
    AbandonDownload();
    dialog_.Close();
    Tell("Download complete. Close Wrenlow and run the setup.", os::BoxIcon::Information,
         "Download Complete");
}

// Back to the offer; of a file that is not finished nothing stays behind.
void frmUpdate::AbandonDownload() {
    ++currentDownload;
    wsDownload_.Close();
    tmrRate_.Stop();
    file_.reset();
    ShowStage(Stage::Offer);
}

void frmUpdate::FailDownload(const std::string& text) {
    AbandonDownload();
    Tell(text, os::BoxIcon::Error);
}

// What a socket's event has led to belongs to this window all the same.
void frmUpdate::Tell(const std::string& text, os::BoxIcon icon, const std::string& title) {
    const os::BoxesBefore cause(dialog_.IsShown() ? dialog_.Handle() : os::BoxesBefore::Current());
    os::ShowMessageBox(text, title, icon);
}
