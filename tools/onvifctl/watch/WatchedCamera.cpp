#include "watch/WatchedCamera.h"

#include <algorithm>

#include "contact/Advice.h"
#include "watch/PullPoint.h"

namespace onvifctl {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// 1 s, 2 s, 4 s ... a minute.
constexpr seconds kLongestPause(60);

milliseconds PauseAfter(unsigned int attempts) {
    constexpr unsigned int kMostDoublings = 6;
    return std::min(seconds(1U << std::min(attempts, kMostDoublings)), kLongestPause);
}

/// Attempts with wrong credentials lock accounts; wrong arguments stay wrong.
bool IsForGood(ExitCode code) {
    return code == ExitCode::kWrongCredentials || code == ExitCode::kUsage;
}

}  // namespace

std::optional<milliseconds> CWatchedCamera::LookAfter() {
    try {
        if (HasSession()) {
            session_->Check(suspected_.exchange(false));
            failedOnce_ = false;
        } else {
            LogIn();
        }
        return session_->Pause();
    } catch (const CNoSubscription& failure) {
        doubtful_ = true;
        return Lose(failure);
    } catch (const CFailure& failure) {
        // An exchange can get lost.
        constexpr seconds kSoon(1);
        if (HasSession() && !std::exchange(failedOnce_, true)) {
            return kSoon;
        }
        if (IsForGood(failure.Code())) {
            session_.reset();
            lastWord_ = failure.Code();
            Tell(WatchState::kGivenUp, failure.what());
            return std::nullopt;
        }
        const auto* login = dynamic_cast<const CLoginFailure*>(&failure);
        return Lose(login == nullptr ? failure : CFailure(login->Code(), login->Finding()));
    } catch (const std::exception& error) {
        return Lose(CFailure(ExitCode::kLoginFailed, error.what()));
    }
}

void CWatchedCamera::LogIn() {
    suspected_ = false;
    failedOnce_ = false;
    session_ = makeSession_(doubtful_);
    doubtful_ = false;
    began_ = Clock::now();
    Tell(lastWord_.exchange(ExitCode::kDone) == ExitCode::kDone ? WatchState::kWatched
                                                                : WatchState::kBack);
    session_->Begin();
}

milliseconds CWatchedCamera::Lose(const CFailure& failure) {
    if (HasSession() && Clock::now() - began_ >= kLongestPause) {
        attempts_ = 0;
    }
    session_.reset();  // tells nothing more from here on
    if (lastWord_.exchange(failure.Code()) == ExitCode::kDone) {
        Tell(WatchState::kLost, failure.what());
    }
    return PauseAfter(attempts_++);
}

void CWatchedCamera::Tell(WatchState state, const std::string& reason) const {
    ConnectionChange change;
    change.time = std::chrono::system_clock::now();
    change.camera = place_.camera;
    change.state = state;
    change.reason = reason;
    place_.news.Add(std::move(change));
}

}  // namespace onvifctl
