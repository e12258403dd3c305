//! Lists the windows of an application, or shares one to a file:
//!
//!     demo windows PREFIX
//!     demo share PREFIX FILE.h264 SECONDS

use std::io::Write;
use std::process::ExitCode;
use std::sync::{Arc, Mutex};
use std::thread::sleep;
use std::time::{Duration, Instant};
use velmora::{find_pid, find_window, windows_of, Capture, Encoder};

const FRAME: Duration = Duration::from_millis(33);

fn list(prefix: &str) -> Option<()> {
    for one in windows_of(find_pid(prefix)?) {
        let (w, h, x, y) = (one.width, one.height, one.left, one.top);
        println!("0x{:08x} {w}x{h}+{x}+{y} {}", one.id, one.title);
    }
    Some(())
}

fn share(prefix: &str, path: &str, seconds: f64) -> Option<()> {
    let mut file = std::fs::File::create(path).ok()?;
    let last = Arc::new(Mutex::new(None));
    let kept = last.clone();
    let _capture = Capture::window(find_window(prefix)?, 30, move |frame| {
        *kept.lock().unwrap() = Some(Arc::new(frame));
    })?;
    let began = Instant::now();
    let take = || last.lock().unwrap().clone();
    while take().is_none() && began.elapsed().as_secs_f64() < seconds {
        sleep(FRAME);
    }
    let first = take()?;
    let write = move |unit: &[u8], _, _| file.write_all(unit).expect("the file can be written");
    let mut encoder = Encoder::new((first.width, first.height), 30, 8_000_000, write)?;
    // A still window is submitted again: it gets sharper.
    while began.elapsed().as_secs_f64() < seconds {
        encoder.encode(&*take()?, began.elapsed().as_nanos() as i64, false);
        sleep(FRAME);
    }
    Some(())
}

fn main() -> ExitCode {
    let arguments: Vec<String> = std::env::args().skip(1).collect();
    let words: Vec<&str> = arguments.iter().map(String::as_str).collect();
    let done = match words[..] {
        ["windows", prefix] => list(prefix),
        ["share", prefix, path, seconds] => share(prefix, path, seconds.parse().unwrap_or(1.0)),
        _ => return ExitCode::from(2),
    };
    if done.is_some() {
        ExitCode::SUCCESS
    } else {
        ExitCode::FAILURE
    }
}
