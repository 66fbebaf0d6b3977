#include "ipc/MessageOnlyWindow.h"

#include "ipc/MessageOnlyWindowImplementation.h"

MessageOnlyWindow::MessageOnlyWindow() : implementation(std::make_shared<Implementation>(this)) {}

MessageOnlyWindow::~MessageOnlyWindow() {
    implementation->close();
}

void MessageOnlyWindow::create(const std::wstring& className) {
    implementation->create(className);
}

void MessageOnlyWindow::registerHandler(UINT message, indev::MESSAGEHANDLER* handler) {
    implementation->registerHandler(message, handler);
}

void MessageOnlyWindow::clearHandlers() {
    implementation->clearHandlers();
}

void MessageOnlyWindow::run() {
    // This reference keeps the implementation alive if the object is destroyed before the call returns.
    const std::shared_ptr<Implementation> kept = implementation;
    kept->run();
}

bool MessageOnlyWindow::stop() {
    const std::shared_ptr<Implementation> kept = implementation;
    return kept->stop();
}
