#pragma once

#include <windows.h>

#include <atomic>
#include <utility>

// The observers that a monitor or the mouse hook calls. They are not owned. One thread at a time adds and removes, also
// while other threads notify, and also from within a notification.
//
// Each notification calls the observers in the order of their registration, as often as they were added. An observer
// that was removed is not called any more, unless a notification is about to call it in that moment; one that is added
// during a notification need not be called by it. An observer is never null. Nothing here waits but `waitForCalls`, and
// there is no lock: an entry is never freed while the list lives, and counts the notifications that are at it.
template<class Observer>
class ObserverList {
public:
    ObserverList() = default;
    ObserverList(const ObserverList&) = delete;
    ObserverList& operator=(const ObserverList&) = delete;
    // No notification may be under way.
    ~ObserverList() {
        while (first.next != nullptr) {
            delete std::exchange(first.next, first.next->next);
        }
    }

    // Duplicates are allowed. Uses the last entry again if it is free; entries before one in use are not used again.
    void add(Observer* observer) {
        Entry* const end = last;
        if (end->observer == nullptr && end->calls == 0) {
            end->observer = observer; // free, with none behind it
        } else {
            end->next = new Entry{observer};
            last = end->next;
        }
    }

    // Removes every registration. The observer can be deleted when no notification is at it any more.
    void remove(const Observer* observer) {
        for (Entry* entry = &first; entry != nullptr; entry = entry->next) {
            if (entry->observer == observer) {
                entry->observer = nullptr;
                entry->removed = observer;
            }
        }
    }

    // Behind `remove`: waits until no notification can still call the observer, at most `limit` ms. Not from within a
    // notification.
    void waitForCalls(const Observer* removed, DWORD limit) {
        constexpr DWORD POLL_INTERVAL = 10; // ms
        const DWORD begun = GetTickCount();
        for (Entry* entry = &first; entry != nullptr; entry = entry->next) {
            if (entry->removed == removed) {
                entry->removed = nullptr; // another observer may get the same address
                while (entry->calls != 0 && GetTickCount() - begun < limit) {
                    Sleep(POLL_INTERVAL);
                }
            }
        }
    }

    // Runs `call` with each observer. What it throws comes out, and ends the notification.
    template<typename Call>
    void notify(Call call) {
        Entry* const end = last;
        for (Entry* entry = &first;; entry = entry->next) {
            const Visit visit(entry->calls); // before the look: whoever removes and then sees 0 is not overtaken
            if (Observer* const observer = entry->observer) {
                call(*observer);
            }
            if (entry == end) {
                return;
            }
        }
    }

private:
    struct Entry {
        std::atomic<Observer*> observer = nullptr; // null: the entry is free
        std::atomic<int> calls = 0;
        const Observer* removed = nullptr; // who was here, for `waitForCalls`
        Entry* next = nullptr; // set before `last`
    };

    class Visit {
    public:
        explicit Visit(std::atomic<int>& countOfCalls) : calls(countOfCalls) {
            ++calls;
        }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;
        ~Visit() {
            --calls;
        }

    private:
        std::atomic<int>& calls;
    };

    Entry first;
    std::atomic<Entry*> last = &first;
};
