#include "modules/screensaver/ScreenSaverModule.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "OrvaUtils/Text.h"
#include "app/Paths.h"
#include "app/log/Logger.h"
#include "ipc/CommandLog.h"
#include "ipc/IPCDispatcher.h"
#include "modules/screensaver/ScreenSaver.h"
#include "modules/screensaver/ScreenSaverConfig.h"

#include <memory>
#include <utility>

using OrvaUtils::decimal;

namespace {

constexpr std::wstring_view SCREEN_SAVER_MODULE = L"ScreenSaverModule";

constexpr DWORD RELOAD = 1;
constexpr DWORD START_OR_STOP = 2;
constexpr DWORD SET_TIMEOUT = 3;
constexpr DWORD SET_LEVEL = 4;
constexpr DWORD ENGAGE_OR_DISABLE = 5;

constexpr std::uint32_t DEFAULT_TIMEOUT = 60000; // ms
constexpr std::int32_t HIGHEST_LEVEL = 255;
// Deliberate: together with the backlight's factor of 255 the driver gets the level minus one, except for level 0. The
// unit is 1/256.
constexpr float LEVEL_UNIT = 0.00390625F;

} // namespace

IModule* ScreenSaverModule::create(IPCDispatcher& dispatcher) {
    auto module = std::make_unique<ScreenSaverModule>();
    // The dispatcher refers to the module without owning it.
    dispatcher.registerHandler(L"ORVATarvexScreenSaverMsg", module.get());
    return module.release();
}

ScreenSaverModule::ScreenSaverModule() {
    loadSettings();
    apply();
}

ScreenSaverModule::~ScreenSaverModule() noexcept(false) {
    remove();
}

std::uint32_t ScreenSaverModule::handleMessage(HWND, UINT, WPARAM wParam, LPARAM lParam) {
    CommandLog::received(SCREEN_SAVER_MODULE, wParam);
    const std::uint32_t result = carryOut(static_cast<DWORD>(wParam), static_cast<std::int32_t>(lParam));
    CommandLog::handled(SCREEN_SAVER_MODULE, wParam, result);
    return result;
}

std::uint32_t ScreenSaverModule::carryOut(DWORD command, std::int32_t argument) {
    std::uint32_t result = CommandResult::Done;
    switch (command) {
    case RELOAD:
        result = loadSettings();
        apply();
        break;
    // This command ignores `enabled` and does not change it.
    case START_OR_STOP:
        if (argument != 0) {
            make();
        } else {
            remove();
        }
        break;
    case SET_TIMEOUT:
        if (argument <= 0) {
            return CommandResult::ArgumentOutOfRange;
        }
        timeout = static_cast<std::uint32_t>(argument);
        apply();
        break;
    case SET_LEVEL:
        if (argument < 0 || argument > HIGHEST_LEVEL) {
            return CommandResult::ArgumentOutOfRange;
        }
        level = argument;
        apply();
        break;
    case ENGAGE_OR_DISABLE:
        if (argument != 0) {
            engage();
        } else {
            enabled = false;
            apply();
        }
        break;
    default:
        return CommandResult::UnknownCommand;
    }
    return result;
}

std::uint32_t ScreenSaverModule::loadSettings() {
    // These defaults stay if the file cannot be read: the screen saver is then off.
    timeout = DEFAULT_TIMEOUT;
    level = 0;
    enabled = false;
    Logger& log = Logger::instance();
    ScreenSaverConfig config;
    if (!config.read(
            OrvaUtils::IO::getFileSystem().combinePath(Paths::INSTALLATION_DIRECTORY, L"ScreenSaverConfig.xml"))) {
        log.writeParts(LogLevel::Error, {SCREEN_SAVER_MODULE, L";settings error"});
        return CommandResult::SettingsUnreadable;
    }
    // The values are not checked: a negative time-out becomes a very long one.
    timeout = static_cast<std::uint32_t>(config.userInactivityTimeout);
    level = config.minLuminosityLevel;
    enabled = config.enabled;
    if (log.admits(LogLevel::Info)) {
        log.writeParts(LogLevel::Info, {SCREEN_SAVER_MODULE, L";settings loaded;timeout: ", decimal(timeout),
                                        L" backlight: ", decimal(level), L" enabled: ", enabled ? L"1" : L"0"});
    }
    return CommandResult::Done;
}

void ScreenSaverModule::apply() {
    if (!enabled) {
        remove();
        return;
    }
    make();
    // A new screen saver has its own defaults until this point.
    screenSaver->setTimeout(timeout);
    screenSaver->setLevel(static_cast<float>(level) * LEVEL_UNIT);
}

void ScreenSaverModule::make() {
    if (screenSaver == nullptr) {
        screenSaver = ScreenSaver::create(GetModuleHandleW(nullptr), L"ORVAScreenSaver");
    }
}

void ScreenSaverModule::remove() {
    if (screenSaver != nullptr) {
        // The pointer is cleared first: `remove` may throw, and the object must not be used again.
        ScreenSaver::remove(std::exchange(screenSaver, nullptr));
    }
}

void ScreenSaverModule::engage() {
    if (!enabled) {
        enabled = true;
        apply();
    }
    // The pointer is null if the screen saver is enabled but command 2 has removed it.
    if (screenSaver != nullptr) {
        screenSaver->activate();
    }
}
