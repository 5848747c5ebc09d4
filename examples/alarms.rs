// Asks a device what it is, and prints its alarms for three seconds.
use std::ffi::{CStr, CString};
use std::os::raw::{c_char, c_int, c_uint, c_void};
use std::ptr::null_mut;

type Observer = extern "C" fn(*mut c_void, u32, c_int, c_uint, c_int);

#[link(name = "onvif_client_c")]
extern "C" {
    fn onvif_client_set_extensions(names: *const c_char) -> c_int;
    fn onvif_client_set_traces(place: *const c_char) -> c_int;
    fn onvif_client_start() -> c_int;
    fn onvif_client_stop();
    fn onvif_client_login(address: *const c_char, port: u16, user: *const c_char,
                          password: *const c_char, id: *mut u32) -> c_int;
    fn onvif_client_logout(id: u32);
    fn onvif_client_get(id: u32, request: *const c_char, result: *mut *mut c_char,
                        size: *mut usize) -> c_int;
    fn onvif_client_free(result: *mut c_char);
    fn onvif_client_observe(id: u32, observer: Observer, context: *mut c_void) -> c_int;
}

extern "C" fn hear(_: *mut c_void, _: u32, alarm: c_int, input: c_uint, active: c_int) {
    println!("alarm {alarm} input {input} active {active}");
}

fn main() {
    let words: Vec<CString> = std::env::args().map(|word| CString::new(word).unwrap()).collect();
    let port: u16 = words[2].to_str().unwrap().parse().expect("a port");
    let (mut camera, mut result) = (0u32, null_mut());
    unsafe {
        onvif_client_set_extensions(b"all\0".as_ptr().cast());
        onvif_client_set_traces(b"off\0".as_ptr().cast());
        onvif_client_start();
        let error = onvif_client_login(words[1].as_ptr(), port, words[3].as_ptr(),
                                       words[4].as_ptr(), &mut camera);
        assert_eq!(error, 0, "login failed");
        let request = b"<Get><devInfo/></Get>\0".as_ptr().cast();
        assert_eq!(onvif_client_get(camera, request, &mut result, null_mut()), 0);
        println!("{}", CStr::from_ptr(result).to_string_lossy());
        onvif_client_free(result);
        assert_eq!(onvif_client_observe(camera, hear, null_mut()), 0);
        std::thread::sleep(std::time::Duration::from_secs(3));
        onvif_client_logout(camera);
        onvif_client_stop();
    }
}
