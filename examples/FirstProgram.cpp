#include <cstdio>
#include <cstdlib>

#include "onvif_client/OnvifClient.h"

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: %s IP PORT USER PASSWORD\n", argv[0]);
        return 2;
    }
    ONVIF_CLIENT_Initial();
    unsigned int error = 0;
    const unsigned int id = ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, argv[1],
                                               static_cast<unsigned short>(std::atoi(argv[2])),
                                               argv[3], argv[4], &error);
    char* response = nullptr;
    int length = 0;
    if (id != ONVIF_CLIENT_NO_LOGIN_ID &&
        ONVIF_CLIENT_GetCfg(id, "<Get version=\"1.0\" systemType=\"ipc\"><devInfo/></Get>",
                            response, &length)) {
        std::puts(response);
    }
    ONVIF_CLIENT_DelResponseBuff(response);
    ONVIF_CLIENT_Logout(id);
    ONVIF_CLIENT_Quit();
    return error == 0 ? 0 : 1;
}
