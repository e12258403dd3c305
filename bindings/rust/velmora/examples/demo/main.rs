//! Lists the windows of an application, shares one to a file, shows such a file, or reaches for the
//! rest: says which machine this is, puts the pointer somewhere and looks into a sound file:
//!
//!     demo windows PREFIX
//!     demo share PREFIX FILE.h264 SECONDS
//!     demo view FILE.h264 SECONDS
//!     demo services X Y SOUND

mod host;

use std::io::Write;
use std::process::ExitCode;
use std::sync::{Arc, Mutex};
use std::thread::sleep;
use std::time::{Duration, Instant};
use velmora::windows::{find_pid, windows_of};
use velmora::{find_window, input, system};
use velmora::{Capture, Decoder, Encoder, Limits, Presenter, Shown, Sound, Source};

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
    let window = Source::Window(find_window(Some(prefix), None)?);
    let _capture = Capture::new(window, Limits::default(), move |frame| {
        *kept.lock().unwrap() = Some(Arc::new(frame));
    })?;
    let began = Instant::now();
    let take = || last.lock().unwrap().clone();
    while take().is_none() && began.elapsed().as_secs_f64() < seconds {
        sleep(FRAME);
    }
    let first = take()?;
    let write = move |unit: &[u8], _, _| file.write_all(unit).expect("the file can be written");
    let mut encoder = Encoder::new((first.width, first.height), 30, 8_000_000, true, write)?;
    // A still window is submitted again: it gets sharper.
    while began.elapsed().as_secs_f64() < seconds {
        encoder.encode(&*take()?, began.elapsed().as_nanos() as i64, false);
        sleep(FRAME);
    }
    Some(())
}

/// Cuts in front of parameter sets and first slices, whatever comes first after a slice.
fn access_units(stream: &[u8]) -> Vec<&[u8]> {
    let (mut units, mut start, mut after_slice) = (Vec::new(), 0, false);
    for at in 0..stream.len().saturating_sub(5) {
        if stream[at..at + 4] != [0, 0, 0, 1] {
            continue;
        }
        let is_slice = matches!(stream[at + 4] & 31, 1 | 5);
        let is_first = stream[at + 5] >= 128;
        if after_slice && (is_first || !is_slice) {
            units.push(&stream[start..at]);
            start = at;
            after_slice = false;
        }
        after_slice |= is_slice;
    }
    units.push(&stream[start..]);
    units
}

fn view(path: &str, seconds: f64) -> Option<()> {
    let stream = std::fs::read(path).ok()?;
    let mut units = access_units(&stream).into_iter();
    let last = Arc::new(Mutex::new(None));
    let kept = last.clone();
    let mut presenter = Presenter::new()?;
    host::window_around(presenter.view(), "Velmora view", 640, 480)?;
    let mut decoder = Decoder::new(move |frame| *kept.lock().unwrap() = Some(frame))?;
    let began = Instant::now();
    let mut shown = 0;
    while began.elapsed().as_secs_f64() < seconds {
        if let Some(unit) = units.next() {
            decoder.decode(unit, began.elapsed().as_nanos() as i64);
        }
        if let Some(frame) = &*last.lock().unwrap() {
            shown += i32::from(presenter.show(frame) == Shown::Ok);
        }
        host::turn_main_loop();
        sleep(FRAME);
    }
    (shown > 0).then_some(())
}

fn services(x: f64, y: f64, path: &str) -> Option<()> {
    println!("{}", system::machine_id()?);
    input::move_pointer(x, y);
    let (x, y) = input::pointer()?;
    println!("{x} {y}");
    println!("{}", Sound::open(path)?.duration());
    Some(())
}

fn main() -> ExitCode {
    let arguments: Vec<String> = std::env::args().skip(1).collect();
    let words: Vec<&str> = arguments.iter().map(String::as_str).collect();
    let done = match words[..] {
        ["windows", prefix] => list(prefix),
        ["share", prefix, path, seconds] => share(prefix, path, seconds.parse().unwrap_or(1.0)),
        ["view", path, seconds] => view(path, seconds.parse().unwrap_or(1.0)),
        ["services", x, y, sound] => {
            services(x.parse().unwrap_or(0.0), y.parse().unwrap_or(0.0), sound)
        }
        _ => return ExitCode::from(2),
    };
    if done.is_some() {
        ExitCode::SUCCESS
    } else {
        ExitCode::FAILURE
    }
}
