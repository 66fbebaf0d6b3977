#include "modules/buzzer/BuzzerModule.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/PlatformInfo/PlatformInfo.h"
#include "app/Paths.h"
#include "app/log/Logger.h"
#include "ipc/CommandLog.h"
#include "ipc/IPCDispatcher.h"
#include "modules/buzzer/MouseHook.h"
#include "modules/buzzer/TouchBuzzer.h"
#include "modules/buzzer/TouchBuzzerConfig.h"

#include <memory>
#include <utility>

namespace {

constexpr std::wstring_view BUZZER_MODULE = L"BuzzerModule";
constexpr DWORD RELOAD_SETTINGS = 1;
constexpr std::int32_t CLICK = 50; // ms

// Returns the default frequency of the panel's model in Hz. The code of a model that cannot be read is 0.
std::int32_t defaultFrequency() {
    switch (OrvaUtils::PlatformInfo::instance().getModelCode()) {
    case 0x402:
    case 0x403:
    case 0x406:
        return 3400;
    default:
        return 2400;
    }
}

} // namespace

IModule* BuzzerModule::create(IPCDispatcher& dispatcher) {
    auto module = std::make_unique<BuzzerModule>();
    // The dispatcher refers to the module without owning it.
    dispatcher.registerHandler(L"ORVATarvexBuzzerMsg", module.get());
    return module.release();
}

BuzzerModule::BuzzerModule() {
    loadSettings();
    apply();
}

BuzzerModule::~BuzzerModule() noexcept(false) {
    switchOff();
}

std::uint32_t BuzzerModule::handleMessage(HWND, UINT, WPARAM wParam, LPARAM) {
    CommandLog::received(BUZZER_MODULE, wParam);
    std::uint32_t result = CommandResult::UnknownCommand;
    if (static_cast<DWORD>(wParam) == RELOAD_SETTINGS) {
        result = loadSettings();
        apply();
    }
    CommandLog::handled(BUZZER_MODULE, wParam, result);
    return result;
}

std::uint32_t BuzzerModule::loadSettings() {
    frequencyHz = 3400;
    // These defaults stay if the file cannot be read: the buzzer is then off.
    enabled = false;
    Logger& log = Logger::instance();
    const std::wstring path =
        OrvaUtils::IO::getFileSystem().combinePath(Paths::INSTALLATION_DIRECTORY, L"TouchBuzzerConfig.xml");
    TouchBuzzerConfig config;
    if (!config.read(path)) {
        log.writeParts(LogLevel::Error, {BUZZER_MODULE, L";settings error"});
        return CommandResult::SettingsUnreadable;
    }
    enabled = config.enabled;
    if (config.frequency < 0) {
        config.frequency = defaultFrequency();
        // A failure is ignored: the file then stays as saveDocument describes.
        config.write(path);
    }
    frequencyHz = config.frequency;
    log.writeParts(LogLevel::Info, {BUZZER_MODULE, L";settings loaded; enabled: ", enabled ? L"1" : L"0"});
    return CommandResult::Done;
}

void BuzzerModule::apply() {
    if (!enabled) {
        switchOff();
    } else if (buzzer == nullptr) {
        // Deliberate: a buzzer that exists keeps its frequency.
        buzzer = new TouchBuzzer(CLICK, frequencyHz);
        // The result is ignored: without a hook the buzzer stays silent.
        MouseHook::instance().install();
    }
}

void BuzzerModule::switchOff() {
    // The hook is removed first, so that no new click begins. The pointer is cleared before the deletion.
    MouseHook::instance().uninstall();
    delete std::exchange(buzzer, nullptr);
}
