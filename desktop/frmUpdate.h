// frmUpdate: asks the update server whether another version exists, offers it, and downloads its setup file
// to a place of the user's choice. Nothing that was downloaded is ever started by us.
//
// The server is a setting of the build (WRENLOW_UPDATE_HOST, "host" or "host:port"); without one no
// connection is ever made. What it answers is read by UpdateReply.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "desktop/UpdateReply.h"
#include "net/EventLoop.h"
#include "net/Tcp.h"
#include "os/desktop/Dialog.h"
#include "os/desktop/FileWriter.h"
#include "os/desktop/MessageBox.h"

class frmUpdate {
 public:
    static constexpr std::int64_t kCheckLimitMs = 30'000;  // the whole of a check, connecting included

    frmUpdate();  // with the build's server
    explicit frmUpdate(const std::string& server);
    ~frmUpdate();

    // Asks for the latest version. Another one than ours is offered in the window. A negative answer and a
    // failure are told only when `bShow` says that the user asked. A check that is running starts anew; while
    // a file is being downloaded its window comes to the front instead.
    void CheckForUpdate(bool bShow);

    os::Dialog& Window() { return dialog_; }

 private:
    enum class Stage { Offer, Connecting, Choosing, Downloading };

    void wsUpdate_Connected();
    void wsUpdate_Data(std::span<char> bytes);
    void wsUpdate_Closed();
    void wsUpdate_Failed(std::int32_t number);
    void tmrCheck_Tick();
    void wsDownload_Connected();
    void wsDownload_Data(std::span<char> bytes);
    void wsDownload_Closed();
    void wsDownload_Failed(std::int32_t number);
    void tmrRate_Tick();
    void cmdDownload_Click();
    void cmdClose_Click();

    void Connect(net::TcpSocket& socket) const;
    void SendRequest(net::TcpSocket& socket, const std::string& path) const;
    void FinishCheck(UpdateReply::Version::Result result);
    void ShowOffer();
    void ShowStage(Stage stage);
    void BeginFile(const os::Path& path);
    void TakePiece(std::string_view bytes);
    void ShowProgress();
    void FinishDownload();
    void AbandonDownload();
    void FailDownload(const std::string& text);
    void Tell(const std::string& text, os::BoxIcon icon, const std::string& title = os::kApplicationTitle);

    std::string host_;
    std::uint16_t port_ = 0;  // 0: this build has no update server
    os::Dialog dialog_;
    net::TcpSocket wsUpdate_;
    net::TcpSocket wsDownload_;
    net::Timer tmrCheck_;
    net::Timer tmrRate_;
    bool bShow_ = false;
    UpdateReply::Version version_;

    Stage stage_ = Stage::Offer;
    UpdateReply::Download download_;
    std::unique_ptr<os::FileWriter> file_;
    std::int64_t rateTime_ = 0;  // when the bytes were last counted, and how many there were
    std::uint64_t rateBytes_ = 0;
};
