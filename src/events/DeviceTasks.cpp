#include "events/DeviceTasks.h"

#include <utility>

#include "events/DeviceExchanges.h"

namespace onvif_client {

namespace {

constexpr int kMostResubscriptions = 5;

}  // namespace

class CDeviceTasks::CTask {
 public:
    CTask(CDeviceTasks& tasks, std::shared_ptr<EventDeviceRecord> record, DeviceTask wanted)
        : owner(tasks), kind(wanted), record_(std::move(record)) {}
    ~CTask() { record_->Unclaim(); }
    CTask(const CTask&) = delete;
    CTask& operator=(const CTask&) = delete;

    void Perform() const {
        switch (kind) {
            case DeviceTask::kPull:
                SendPull(*record_, owner.sessions_);
                break;
            case DeviceTask::kResubscribe:
                Resubscribe(*record_, owner.sessions_);
                break;
            case DeviceTask::kRenew:
                Renew(*record_, owner.sessions_);
                break;
        }
    }

    CDeviceTasks& owner;
    const DeviceTask kind;
    Tasks::iterator place;  // of the task itself

 private:
    const std::shared_ptr<EventDeviceRecord> record_;
};

/// Takes a task out at its end, however that comes.
class CDeviceTasks::CEnding {
 public:
    explicit CEnding(const CTask& task) : task_(task) {}
    ~CEnding() { task_.owner.End(task_); }
    CEnding(const CEnding&) = delete;
    CEnding& operator=(const CEnding&) = delete;

 private:
    const CTask& task_;
};

CDeviceTasks::CDeviceTasks(ISessionSource& sessions) : sessions_(sessions) {}

CDeviceTasks::~CDeviceTasks() = default;

bool CDeviceTasks::QueueTask(std::shared_ptr<EventDeviceRecord> record, DeviceTask task) {
    const CLockGuard guard(lock_);
    const bool subscribes = task == DeviceTask::kResubscribe;
    const int most = record->Answers() ? kMostResubscriptions : kMostResubscriptions - 1;
    if (subscribes && resubscriptions_ >= most) {
        return false;
    }
    Tasks added;  // joins the others when the pool has it; until then the pool's thread must wait
    added.emplace_back(*this, std::move(record), task);
    added.back().place = added.begin();
    pool_.AddTask(&CDeviceTasks::Run, &added.back());
    resubscriptions_ += subscribes ? 1 : 0;
    tasks_.splice(tasks_.end(), added);
    return true;
}

void CDeviceTasks::Run(void* argument) {
    const CTask& task = *static_cast<CTask*>(argument);
    const CEnding ending(task);
    task.Perform();
}

void CDeviceTasks::End(const CTask& task) {
    Tasks done;  // ends without the lock: it may be the last to hold the record
    const CLockGuard guard(lock_);
    resubscriptions_ -= task.kind == DeviceTask::kResubscribe ? 1 : 0;
    done.splice(done.end(), tasks_, task.place);
}

}  // namespace onvif_client
