/// @file
/// Log texts and thread names in Chinese, as bytes of the GBK code page (936), the encoding that
/// readers of old logs expect; log texts also in UTF-8.
#ifndef ONVIF_CLIENT_COMMON_GBKTEXTS_H
#define ONVIF_CLIENT_COMMON_GBKTEXTS_H

#include "platform/Corekit.h"

namespace onvif_client {

/// The pool's thread could not be made!
inline constexpr CorekitText kPoolThreadNotMade = {
    "\xCF\xDF\xB3\xCC\xB3\xD8\xB5\xC4\xCF\xDF"
    "\xB3\xCC\xB4\xB4\xBD\xA8\xCA\xA7\xB0\xDC\xA3\xA1",
    "线程池的线程创建失败！"};
/// The pool's thread ends: its argument is wrong!
inline constexpr CorekitText kPoolThreadWithoutPool = {
    "\xCF\xDF\xB3\xCC\xB3\xD8\xB5\xC4\xCF\xDF\xB3\xCC\xB2\xCE"
    "\xCA\xFD\xB4\xED\xCE\xF3\xB5\xBC\xD6\xC2\xCD\xCB\xB3\xF6\xA3\xA1",
    "线程池的线程参数错误导致退出！"};
/// The pool's thread ends: the closing event is set!
inline constexpr CorekitText kPoolThreadEnds = {
    "\xCF\xDF\xB3\xCC\xB3\xD8\xB5\xC4\xCF\xDF\xB3\xCC\xD3\xC9\xD3\xDA\xB9\xD8"
    "\xB1\xD5\xCA\xC2\xBC\xFE\xD3\xD0\xD0\xC5\xBA\xC5\xB6\xF8\xCD\xCB\xB3\xF6\xA3\xA1",
    "线程池的线程由于关闭事件有信号而退出！"};

/// The name of the thread that looks for events: "onvif " and "event detection thread!"
inline constexpr const char* kEventThreadName =
    "onvif \xCA\xC2\xBC\xFE\xBC\xEC\xB2\xE2\xCF\xDF\xB3\xCC!";

}  // namespace onvif_client

#endif
