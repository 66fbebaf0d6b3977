#pragma once

#include <windows.h>

#include <atomic>
#include <type_traits>
#include <utility>

// The list of observers that a monitor or the mouse hook calls. Observers are not owned and never null.
//
// Threads: one thread at a time adds and removes. Other threads may notify at the same time, and an observer may add or
// remove during a notification. There is no lock, and only `waitForVisits` waits. An entry is never freed while the
// list exists, and it counts the visits of notifications.
//
// Order: a notification calls the observers in the order of registration, and an observer as often as it was added. A
// removed observer is not called again, except by a notification that is just about to call it. An observer that is
// added during a notification may be missed by that notification.
template<class Observer>
class ObserverList {
public:
    ObserverList() = default;
    ObserverList(const ObserverList&) = delete;
    ObserverList& operator=(const ObserverList&) = delete;
    // No notification may be in progress.
    ~ObserverList() {
        while (first.next != nullptr) {
            delete std::exchange(first.next, first.next->next);
        }
    }

    // A notification's visit to an entry. While it lasts, the notification may use the observer of the entry.
    class Visit {
    public:
        explicit Visit(std::atomic<int>& countOfVisits) : visits(&countOfVisits) {
            ++*visits;
        }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;
        ~Visit() {
            end();
        }

        // Ends the visit early: the rest of the call does not use the observer.
        void end() {
            if (visits != nullptr) {
                --*std::exchange(visits, nullptr);
            }
        }

    private:
        std::atomic<int>* visits; // null: the visit has ended
    };

    // Adds an observer; it may be in the list already. Reuses the last entry if it is free. Throws std::bad_alloc if
    // memory is short.
    void add(Observer* observer) {
        Entry* const end = last;
        if (end->observer == nullptr && end->visits == 0) {
            end->observer = observer; // the last entry is free
        } else {
            end->next = new Entry{observer};
            last = end->next;
        }
    }

    // Removes all registrations of an observer. Delete the observer only when no notification can still call it.
    void remove(const Observer* observer) {
        for (Entry* entry = &first; entry != nullptr; entry = entry->next) {
            if (entry->observer == observer) {
                entry->observer = nullptr;
                entry->removed = observer;
            }
        }
    }

    // Waits until no notification can still use an observer that was removed, at most about `limit` milliseconds. Do
    // not call this during a visit to this observer.
    void waitForVisits(const Observer* removed, DWORD limit) {
        constexpr DWORD POLL_INTERVAL = 10; // ms
        DWORD waited = 0;
        for (Entry* entry = &first; entry != nullptr; entry = entry->next) {
            if (entry->removed == removed) {
                entry->removed = nullptr; // another observer may get the same address
                for (; entry->visits != 0 && waited < limit; waited += POLL_INTERVAL) {
                    Sleep(POLL_INTERVAL);
                }
            }
        }
    }

    // Runs `call` with each observer, and with the visit if `call` takes it as its second parameter. An exception of
    // `call` ends the notification and passes through.
    template<typename Call>
    void notify(Call call) {
        Entry* const end = last;
        for (Entry* entry = &first;; entry = entry->next) {
            // The visit begins before the look at the observer: a thread that has removed the observer and then
            // reads 0 can delete it.
            Visit visit(entry->visits);
            if (Observer* const observer = entry->observer) {
                if constexpr (std::is_invocable_v<Call, Observer&, Visit&>) {
                    call(*observer, visit);
                } else {
                    call(*observer);
                }
            }
            if (entry == end) {
                return;
            }
        }
    }

private:
    // One registration.
    struct Entry {
        std::atomic<Observer*> observer = nullptr; // null: the entry is free
        std::atomic<int> visits = 0;
        const Observer* removed = nullptr; // the observer that was removed here, for `waitForVisits`
        Entry* next = nullptr; // set before `last`
    };

    Entry first;
    std::atomic<Entry*> last = &first;
};
