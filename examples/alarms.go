// Asks a device what it is, and prints its alarms for three seconds.
package main

/*
#cgo LDFLAGS: -lonvif_client_c
#include <stdlib.h>
#include <onvif_client/onvif_client_c.h>
void hear(void* context, onvif_client_id id, int alarm, unsigned int input, int active);
*/
import "C"

import (
	"fmt"
	"os"
	"strconv"
	"time"
	"unsafe"
)

//export hear
func hear(context unsafe.Pointer, id C.onvif_client_id, alarm C.int, input C.uint, active C.int) {
	fmt.Println("alarm", alarm, "input", input, "active", active)
}

func check(code C.int) {
	if code != C.onvif_client_success {
		fmt.Fprintln(os.Stderr, C.GoString(C.onvif_client_error_text(code)))
		os.Exit(1)
	}
}

func main() {
	port, _ := strconv.Atoi(os.Args[2])
	C.onvif_client_set_extensions(C.CString("all"))
	C.onvif_client_set_traces(C.CString("off"))
	C.onvif_client_start()
	defer C.onvif_client_stop()
	var camera C.onvif_client_id
	check(C.onvif_client_login(C.CString(os.Args[1]), C.uint16_t(port), C.CString(os.Args[3]),
		C.CString(os.Args[4]), &camera))
	var result *C.char
	check(C.onvif_client_get(camera, C.CString("<Get><devInfo/></Get>"), &result, nil))
	fmt.Println(C.GoString(result))
	C.onvif_client_free(result)
	check(C.onvif_client_observe(camera, C.onvif_client_observer(C.hear), nil))
	time.Sleep(3 * time.Second)
	C.onvif_client_logout(camera)
}
