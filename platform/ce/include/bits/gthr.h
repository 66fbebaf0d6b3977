// The C++ library's interface to threads. The toolchain is built without threads. This file replaces the toolchain's
// own and says that threads exist, so that shared pointers count atomically. Nothing else of it is used: the mutexes
// are declared because headers name them, and a program that used a mutex would not link.
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
