//! A closure that the library calls, and the end of the object that it belongs to.

use std::ffi::c_void;
use std::sync::atomic::{AtomicU64, Ordering};

static NEXT_THREAD: AtomicU64 = AtomicU64::new(1);
thread_local!(static THREAD: u64 = NEXT_THREAD.fetch_add(1, Ordering::Relaxed));

fn this_thread() -> u64 {
    THREAD.with(|id| *id)
}

/// What an object's user pointer points to. The library runs one callback of an object at a time.
pub(crate) struct Target<F> {
    closure: F,
    running_on: AtomicU64,
}

impl<F> Target<F> {
    pub(crate) fn new(closure: F) -> *mut Target<F> {
        let running_on = AtomicU64::new(0);
        Box::into_raw(Box::new(Target {
            closure,
            running_on,
        }))
    }

    /// # Safety
    /// `user` comes from `new`, its object has not ended, and no other callback of it runs.
    pub(crate) unsafe fn run(user: *mut c_void, call: impl FnOnce(&mut F)) {
        let target = user.cast::<Target<F>>();
        (*target).running_on.store(this_thread(), Ordering::Relaxed);
        call(&mut (*target).closure);
        (*target).running_on.store(0, Ordering::Relaxed);
    }
}

/// An object with callbacks: ended first, its closure freed afterwards.
pub(crate) struct Object<F: 'static> {
    pub(crate) handle: *mut c_void,
    target: *mut Target<F>,
    end: unsafe extern "C" fn(*mut c_void),
}

// The functions may be called from any thread, and closures are required to be Send.
unsafe impl<F: Send> Send for Object<F> {}

impl<F: Send> Object<F> {
    /// # Safety
    /// `start` makes an object with that user pointer, `end` waits for its last callback unless it
    /// is called in one.
    pub(crate) unsafe fn start(
        closure: F,
        end: unsafe extern "C" fn(*mut c_void),
        start: impl FnOnce(*mut c_void) -> *mut c_void,
    ) -> Option<Self> {
        let target = Target::new(closure);
        let handle = start(target.cast());
        if handle.is_null() {
            drop(Box::from_raw(target));
            return None;
        }
        Some(Object {
            handle,
            target,
            end,
        })
    }
}

impl<F: 'static> Drop for Object<F> {
    fn drop(&mut self) {
        let (handle, target, end) = (self.handle as usize, self.target as usize, self.end);
        // SAFETY: the handle ends once; afterwards no callback uses the closure.
        let finish = move || unsafe {
            end(handle as *mut c_void);
            drop(Box::from_raw(target as *mut Target<F>));
        };
        // SAFETY: the target lives until `finish`.
        if unsafe { (*self.target).running_on.load(Ordering::Relaxed) } == this_thread() {
            // Dropped in its own callback: the closure still runs, so another thread ends it.
            std::thread::spawn(finish);
        } else {
            finish();
        }
    }
}
