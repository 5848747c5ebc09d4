/* Asks a device what it is, and prints its alarms for ten seconds. */
#include <stdio.h>
#include <stdlib.h>

#include "onvif_client/onvif_client_c.h"
#ifdef _WIN32
#include <windows.h>
#define SLEEP_10_SECONDS() Sleep(10000)
#else
#include <unistd.h>
#define SLEEP_10_SECONDS() sleep(10)
#endif

static void Print(void* context, onvif_client_id id, int alarm, unsigned int input, int active) {
    (void)id;
    (void)context;
    printf("%s %u %s\n", alarm == onvif_client_motion ? "motion" : "alarm input", input,
           active ? "begins" : "ends");
}

int main(int argc, char** argv) {
    onvif_client_id camera = 0;
    char* result = NULL;
    int error = 0;
    if (argc != 5) {
        fprintf(stderr, "usage: %s IP PORT USER PASSWORD\n", argv[0]);
        return 2;
    }
    onvif_client_set_extensions("all"); /* alarms are told once */
    onvif_client_set_traces("off");
    onvif_client_start();
    error = onvif_client_login(argv[1], (uint16_t)atoi(argv[2]), argv[3], argv[4], &camera);
    if (error == onvif_client_success) {
        error = onvif_client_get(camera, "<Get><devInfo/></Get>", &result, NULL);
    }
    if (error == onvif_client_success) {
        puts(result);
        onvif_client_free(result);
        error = onvif_client_observe(camera, Print, NULL);
        SLEEP_10_SECONDS();
    }
    if (error != onvif_client_success) {
        fprintf(stderr, "%s: %s\n", argv[1], onvif_client_error_text(error));
    }
    onvif_client_logout(camera);
    onvif_client_stop();
    return error == onvif_client_success ? 0 : 1;
}
