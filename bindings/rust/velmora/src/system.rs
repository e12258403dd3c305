//! Secrets, the machine's identifier and permissions.

use crate::with_text;
use std::os::raw::c_char;
use velmora_sys as sys;

fn with_address<T>(
    service: &str,
    account: &str,
    mut call: impl FnMut(*const c_char, *const c_char) -> T,
) -> Option<T> {
    with_text(Some(service), |service| {
        with_text(Some(account), |account| call(service, account))
    })?
}

pub fn set_secret(service: &str, account: &str, secret: &[u8]) -> bool {
    let size = match i32::try_from(secret.len()) {
        Ok(size) => size,
        Err(_) => return false,
    };
    // SAFETY: texts and bytes live through the call.
    let set =
        |service, account| unsafe { sys::vlm_secret_set(service, account, secret.as_ptr(), size) };
    with_address(service, account, set).unwrap_or(false)
}

/// The caller wipes it.
pub fn secret(service: &str, account: &str) -> Option<Vec<u8>> {
    with_address(service, account, |service, account| {
        let mut found = Vec::new();
        loop {
            let capacity = found.len() as i32;
            // SAFETY: the vector has that capacity.
            match unsafe { sys::vlm_secret_get(service, account, found.as_mut_ptr(), capacity) } {
                0 => return None,
                length if length > 0 => {
                    found.truncate(length as usize);
                    return Some(found);
                }
                missing => found.resize(missing.unsigned_abs() as usize, 0),
            }
        }
    })?
}

pub fn delete_secret(service: &str, account: &str) -> bool {
    // SAFETY: the texts live through the call.
    let delete = |service, account| unsafe { sys::vlm_secret_delete(service, account) };
    with_address(service, account, delete).unwrap_or(false)
}

/// A UUID in its text form.
pub fn machine_id() -> Option<String> {
    let mut text = vec![0u8; 64];
    // SAFETY: the vector has that capacity.
    let length = unsafe { sys::vlm_machine_id(text.as_mut_ptr().cast(), text.len() as i32) };
    text.truncate(length.max(0) as usize);
    String::from_utf8(text).ok().filter(|id| !id.is_empty())
}

pub fn may_record_screen(request: bool) -> bool {
    // SAFETY: it takes no pointer.
    unsafe { sys::vlm_perm_screen_recording(request) }
}

pub fn may_drive_input(prompt: bool) -> bool {
    // SAFETY: it takes no pointer.
    unsafe { sys::vlm_perm_accessibility(prompt) }
}

/// "screen", "accessibility" or "microphone"; None opens the general page.
pub fn open_settings(kind: Option<&str>) -> bool {
    // SAFETY: the text lives through the call.
    with_text(kind, |kind| unsafe { sys::vlm_perm_open_settings(kind) }).unwrap_or(false)
}
