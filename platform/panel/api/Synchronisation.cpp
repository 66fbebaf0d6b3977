// Handles, waits, events, mutexes and critical sections.
#include "platform/panel/Gate.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Wait.h"

#include <unistd.h>

using namespace panel;

namespace {

constexpr std::size_t maxName = 260;

bool isObjectName(const std::string& name) {
    return characterCount(name) <= maxName && name.find('\\') == std::string::npos;
}

struct NamedObject {
    std::uint32_t handle = 0;
    DWORD error = ERROR_SUCCESS; // ERROR_ALREADY_EXISTS goes with a valid handle
};

// Opens the object of this name. If it does not exist, creates it and calls `initialise`. Needs the lock.
template<class Initialise>
NamedObject openOrMake(Gate& gate, ObjectType type, LPCWSTR name, Initialise initialise) {
    const std::string text = toUtf8(name);
    if (!isObjectName(text))
        return {0, ERROR_INVALID_NAME};
    Image& image = gate.image();
    Slot object = name ? objects::findNamed(image, type, text) : 0;
    const bool existed = object != 0;
    if (!existed) {
        object = objects::make(image, type);
        if (!object)
            return {0, ERROR_NOT_ENOUGH_MEMORY};
        if (name)
            objects::setName(objects::at(image, object), text);
        initialise(objects::at(image, object));
    }
    const std::uint32_t handle = objects::openHandle(image, gate.process(), object);
    if (!handle) {
        if (!existed)
            objects::at(image, object).type = ObjectType::free;
        return {0, ERROR_NOT_ENOUGH_MEMORY};
    }
    return {handle, existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS};
}

// Counts the signals of a named event for `panel status`. A test can see them even if the event is destroyed at once.
void countSignal(Image& image, std::string_view event) {
    event = event.substr(0, sizeof SignalRecord::name - 1);
    for (SignalRecord& signal : image.signals) {
        if (signal.name[0] == 0)
            copyText(signal.name, event);
        if (event == signal.name) {
            ++signal.count;
            return;
        }
    }
}

HANDLE answer(Gate& gate, const NamedObject& made) {
    if (made.error != ERROR_SUCCESS)
        return gate.fails(handleOf(made.handle), made.error);
    gate.setLastError(ERROR_SUCCESS);
    return gate.done(handleOf(made.handle));
}

bool canBeWaitedFor(const ObjectRecord& object) {
    return object.type == ObjectType::event || object.type == ObjectType::mutex || object.type == ObjectType::process ||
           object.type == ObjectType::thread || object.type == ObjectType::queue;
}

DWORD waitFor(Gate& gate, DWORD count, const HANDLE* handles, DWORD milliseconds) {
    Lock lock(gate.image());
    Slot waited[maxWaitObjects];
    for (DWORD index = 0; index < count; ++index) {
        waited[index] = objects::resolve(gate.image(), gate.process(), numberOf(handles[index]));
        if (!waited[index] || !canBeWaitedFor(objects::at(gate.image(), waited[index])))
            return gate.fails(WAIT_FAILED, ERROR_INVALID_HANDLE);
    }
    return gate.done(waitForObjects(lock, gate.image(), gate.slot(), waited, count, milliseconds));
}

} // namespace

DWORD GetLastError() noexcept {
    Gate gate(Function::GetLastError);
    return gate.done(DWORD{gate.thread.lastError});
}

BOOL CloseHandle(HANDLE object) noexcept {
    Gate gate(Function::CloseHandle, object);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(object));
    const ObjectType type = slot ? objects::at(gate.image(), slot).type : ObjectType::free;
    if (!slot || type == ObjectType::search || type == ObjectType::key || type == ObjectType::partitions ||
        type == ObjectType::notification) // these handles have other closing functions
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    if (type == ObjectType::file) {
        LocalObject& local = gate.runtime.local(numberOf(object));
        close(local.file);
        local.file = -1;
    }
    objects::closeHandle(gate.image(), gate.process(), numberOf(object));
    return gate.done(TRUE);
}

DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) noexcept {
    Gate gate(Function::WaitForSingleObject, object, milliseconds);
    if (gate.faulted())
        return gate.fault<DWORD>();
    return waitFor(gate, 1, &object, milliseconds);
}

DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll, DWORD milliseconds) noexcept {
    Gate gate(Function::WaitForMultipleObjects, count);
    const bool valid = count > 0 && count <= MAXIMUM_WAIT_OBJECTS && !waitAll;
    for (DWORD index = 0; valid && index < count; ++index)
        gate.shows(objects[index]);
    gate.shows(milliseconds);
    if (gate.faulted())
        return gate.fault<DWORD>();
    if (!valid)
        return gate.fails(WAIT_FAILED, ERROR_INVALID_PARAMETER);
    return waitFor(gate, count, objects, milliseconds);
}

HANDLE CreateEventW(SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState, LPCWSTR name) noexcept {
    Gate gate(Function::CreateEventW, manualReset, initialState, name);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    return answer(gate, openOrMake(gate, ObjectType::event, name, [&](ObjectRecord& event) {
                      event.manualReset = manualReset != FALSE;
                      event.signalled = initialState != FALSE;
                  }));
}

HANDLE OpenEventW(DWORD access, BOOL inherit, LPCWSTR name) noexcept {
    Gate gate(Function::OpenEventW, trace::Hex{access}, inherit, name);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    const Slot event = name ? objects::findNamed(gate.image(), ObjectType::event, toUtf8(name)) : 0;
    if (!event)
        return gate.fails(HANDLE{}, ERROR_FILE_NOT_FOUND);
    const std::uint32_t handle = objects::openHandle(gate.image(), gate.process(), event);
    return handle ? gate.done(handleOf(handle)) : gate.fails(HANDLE{}, ERROR_NOT_ENOUGH_MEMORY);
}

BOOL EventModify(HANDLE event, DWORD operation) noexcept {
    Gate gate(Function::EventModify, event, operation);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(event));
    if (!slot || objects::at(gate.image(), slot).type != ObjectType::event)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    if (operation < EVENT_PULSE || operation > EVENT_SET)
        return gate.fails(FALSE, ERROR_INVALID_PARAMETER);
    objects::at(gate.image(), slot).signalled = operation != EVENT_RESET;
    if (operation != EVENT_RESET) {
        if (objects::at(gate.image(), slot).name[0])
            countSignal(gate.image(), objects::at(gate.image(), slot).name);
        scheduler::serve(gate.image(), slot);
    }
    if (operation == EVENT_PULSE)
        objects::at(gate.image(), slot).signalled = 0;
    return gate.done(TRUE);
}

HANDLE CreateMutexW(SECURITY_ATTRIBUTES*, BOOL initialOwner, LPCWSTR name) noexcept {
    Gate gate(Function::CreateMutexW, initialOwner, name);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    return answer(gate, openOrMake(gate, ObjectType::mutex, name, [&](ObjectRecord& mutex) {
                      if (initialOwner) {
                          mutex.owner = gate.slot();
                          mutex.recursion = 1;
                      }
                  }));
}

BOOL ReleaseMutex(HANDLE mutex) noexcept {
    Gate gate(Function::ReleaseMutex, mutex);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(mutex));
    if (!slot || objects::at(gate.image(), slot).type != ObjectType::mutex)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    ObjectRecord& record = objects::at(gate.image(), slot);
    if (record.owner != gate.slot())
        return gate.fails(FALSE, ERROR_NOT_OWNER);
    if (--record.recursion == 0) {
        record.owner = 0;
        scheduler::serve(gate.image(), slot);
    }
    return gate.done(TRUE);
}

// The fields of a critical section are accessed under the kernel's lock. If a thread leaves a section that it does not
// own, every later enter waits for ever, even the owner's [ms886733].

void InitializeCriticalSection(CRITICAL_SECTION* section) noexcept {
    Gate gate(Function::InitializeCriticalSection);
    const Lock lock(gate.image());
    *section = {};
}

void EnterCriticalSection(CRITICAL_SECTION* section) noexcept {
    Gate gate(Function::EnterCriticalSection);
    Lock lock(gate.image());
    ThreadRecord& me = scheduler::at(gate.image(), gate.slot());
    if (!section->needtrap && (section->OwnerThread == 0 || section->OwnerThread == me.id)) {
        section->OwnerThread = me.id;
        ++section->LockCount;
        return;
    }
    ++section->dwContentions;
    me.waitKind = WaitKind::section;
    me.waitKey = section->needtrap ? 0 : reinterpret_cast<std::uintptr_t>(section); // no leave ever matches the key 0
    // LeaveCriticalSection makes this thread the owner before it releases the thread.
    block(lock, gate.image(), gate.slot(), never);
}

void LeaveCriticalSection(CRITICAL_SECTION* section) noexcept {
    Gate gate(Function::LeaveCriticalSection);
    const Lock lock(gate.image());
    Image& image = gate.image();
    if (section->OwnerThread != scheduler::at(image, gate.slot()).id) {
        section->needtrap = TRUE;
        gate.note("not owned");
        return;
    }
    if (--section->LockCount > 0)
        return;
    Slot next = 0;
    for (Slot thread = 1; thread <= image.threadsUsed; ++thread) {
        const ThreadRecord& record = scheduler::at(image, thread);
        const bool waits = record.state == ThreadState::waiting && record.waitKind == WaitKind::section &&
                           record.process == gate.process() &&
                           record.waitKey == reinterpret_cast<std::uintptr_t>(section);
        if (waits && (!next || record.waitOrder < scheduler::at(image, next).waitOrder))
            next = thread;
    }
    section->OwnerThread = next ? scheduler::at(image, next).id : 0;
    section->LockCount = next ? 1 : 0;
    if (next)
        scheduler::release(image, next, 0);
}

void DeleteCriticalSection(CRITICAL_SECTION* section) noexcept {
    Gate gate(Function::DeleteCriticalSection);
    const Lock lock(gate.image());
    *section = {};
}
