// The library's view of threads. The toolchain is made for machines without any; this file, found before its own, says
// that there are some, so that shared pointers count atomically. That is all that is used of it: the mutexes are
// declared because headers name them, and whoever used one would not link.
#pragma once

#define __GTHREADS 1

typedef int __gthread_key_t;
typedef int __gthread_once_t;
typedef int __gthread_mutex_t;
typedef int __gthread_recursive_mutex_t;

#define __GTHREAD_ONCE_INIT 0
#define __GTHREAD_MUTEX_INIT 0
#define __GTHREAD_RECURSIVE_MUTEX_INIT 0

inline int __gthread_active_p() {
    return 1;
}

int __gthread_mutex_lock(__gthread_mutex_t*);
int __gthread_mutex_unlock(__gthread_mutex_t*);
int __gthread_recursive_mutex_lock(__gthread_recursive_mutex_t*);
int __gthread_recursive_mutex_unlock(__gthread_recursive_mutex_t*);
