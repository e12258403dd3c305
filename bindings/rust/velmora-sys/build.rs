//! A library that is not installed is found in the folder that VLM_LIBRARY_DIR names.
fn main() {
    println!("cargo:rerun-if-env-changed=VLM_LIBRARY_DIR");
    if let Ok(folder) = std::env::var("VLM_LIBRARY_DIR") {
        println!("cargo:rustc-link-search=native={folder}");
    }
}
