//! A closure that the library calls, and the end of the object that it belongs to.

use std::ffi::c_void;
use std::sync::atomic::{AtomicU64, Ordering};

static NEXT_THREAD: AtomicU64 = AtomicU64::new(1);
thread_local!(static THREAD: u64 = NEXT_THREAD.fetch_add(1, Ordering::Relaxed));

fn this_thread() -> u64 {
    THREAD.with(|id| *id)
}

/// What an object's user pointer points to. `F` is behind a lock where it changes when it is called:
/// a callback on the main thread may turn the main loop and so meet itself.
pub(crate) struct Target<F> {
    closure: F,
    running_on: AtomicU64,
}

impl<F> Target<F> {
    /// # Safety
    /// `user` is an object's user pointer, the object has not ended, and its other callbacks run on
    /// this thread only.
    pub(crate) unsafe fn run(user: *mut c_void, call: impl FnOnce(&F)) {
        let target = &*user.cast::<Target<F>>();
        let outer = target.running_on.swap(this_thread(), Ordering::Relaxed);
        call(&target.closure);
        target.running_on.store(outer, Ordering::Relaxed);
    }
}

/// An object with callbacks: ended first, its closure freed afterwards.
pub(crate) struct Object<F: 'static> {
    pub(crate) handle: *mut c_void,
    target: *mut Target<F>,
    end: unsafe extern "C" fn(*mut c_void),
}

// The functions may be called from any thread, and what has to be one thread's takes `&mut`.
unsafe impl<F: Send> Send for Object<F> {}
unsafe impl<F: Send> Sync for Object<F> {}

impl<F: Send> Object<F> {
    /// # Safety
    /// `start` makes an object with that user pointer, `end` waits for its last callback unless it
    /// is called in one.
    pub(crate) unsafe fn start(
        closure: F,
        end: unsafe extern "C" fn(*mut c_void),
        start: impl FnOnce(*mut c_void) -> *mut c_void,
    ) -> Option<Self> {
        let running_on = AtomicU64::new(0);
        let target = Box::into_raw(Box::new(Target {
            closure,
            running_on,
        }));
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
