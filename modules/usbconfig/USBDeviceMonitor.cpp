#include "modules/usbconfig/USBDeviceMonitor.h"

#include "OrvaUtils/Teardown.h"
#include "app/log/Logger.h"
#include "modules/MonitorThread.h"
#include "modules/usbconfig/DeviceNotifications.h"
#include "modules/usbconfig/MountedVolumes.h"
#include "modules/usbconfig/UsbDeviceException.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <memory>
#include <vector>

// The thread, and all that it uses.
class USBDeviceMonitor::Watch : MonitorThread::Loop {
public:
    // Deliberately never deleted: its stop event stays open, and a thread that does not end in time still uses it.
    static Watch& create() {
        static auto* const made = new std::list<std::unique_ptr<Watch>>;
        auto watch = std::make_unique<Watch>();
        if (!watch->thread.isUsable()) {
            throw UsbDeviceException(L"Cannot create event");
        }
        return *made->emplace_back(std::move(watch));
    }

    Watch() : thread(*this) {
        setObservers({});
    }

    void addObserver(USBDeviceMonitorObserver* observer) {
        Observers changed = *current;
        changed.push_back(observer);
        setObservers(std::move(changed));
    }

    void removeObserver(USBDeviceMonitorObserver* observer) {
        Observers changed = *current;
        std::erase(changed, observer);
        setObservers(std::move(changed));
    }

    bool start() {
        if (running) {
            return false;
        }
        thread.start(); // deliberate: a thread that the platform does not make is not missed
        return true;
    }

    bool stop() {
        return !running || thread.stop();
    }

private:
    using Observers = std::vector<USBDeviceMonitorObserver*>;

    DWORD run() override {
        if (running) {
            return 0;
        }
        running = true;
        notifications.start();
        thread.ready();
        const HANDLE awaited[] = {notifications.queue(), thread.stopEvent()};
        DWORD woken = WAIT_FAILED;
        while (woken != WAIT_OBJECT_0 + 1) {
            woken = WaitForMultipleObjects(2, awaited, FALSE, INFINITE);
            if (woken == WAIT_OBJECT_0) {
                readMessage();
            }
        }
        notifications.stop();
        return 0;
    }

    void readMessage() {
        DeviceNotifications::Message message;
        if (!notifications.read(message)) {
            return;
        }
        const std::wstring& device = message.deviceName;
        Logger& log = Logger::instance();
        if (!message.attached) {
            log.writeParts(LogLevel::Debug, {L"Detached device ", device});
            notify({USBDeviceEvent::Detached, device, {}});
            return;
        }
        log.writeParts(LogLevel::Debug, {L"Attached device ", device});
        forEachMountedVolume(device, [&](const std::wstring& volume) {
            log.writeParts(LogLevel::Debug, {L"Volume name ", volume});
            notify({USBDeviceEvent::Attached, device, volume});
        });
    }

    void notify(const USBDeviceEvent& event) const {
        for (USBDeviceMonitorObserver* observer : *current.load()) {
            const Observers& present = *current.load(); // the owner may have removed it meanwhile
            if (std::find(present.begin(), present.end(), observer) != present.end()) {
                observer->onDeviceEvent(event);
            }
        }
    }

    // No list is ever changed or deleted, so the thread may walk one while the owner makes the next.
    void setObservers(Observers changed) {
        current = &lists.emplace_back(std::move(changed));
    }

    std::list<Observers> lists;
    std::atomic<const Observers*> current = nullptr;
    std::atomic<bool> running = false; // set by the thread; deliberate: never cleared
    DeviceNotifications notifications;
    MonitorThread thread;
};

USBDeviceMonitor::USBDeviceMonitor() : watch(Watch::create()) {}

USBDeviceMonitor::~USBDeviceMonitor() noexcept(false) {
    OrvaUtils::Teardown steps;
    steps.run([this] { stop(); });
    steps.finish();
}

void USBDeviceMonitor::addObserver(USBDeviceMonitorObserver* observer) {
    watch.addObserver(observer);
}

void USBDeviceMonitor::removeObserver(USBDeviceMonitorObserver* observer) {
    watch.removeObserver(observer);
}

bool USBDeviceMonitor::start() {
    return watch.start();
}

void USBDeviceMonitor::stop() {
    if (!watch.stop()) {
        throw UsbDeviceException(L"Failed to terminate monitor thread");
    }
}
