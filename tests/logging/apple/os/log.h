// The few unified-log declarations the Apple logger uses, with the device's
// types and values, so that the logger can be compile-checked off Apple.
// The format attribute makes the compiler check each record's arguments
// against its format string, as the device's compiler does.
#pragma once

#include <stdbool.h>
#include <stdint.h>

typedef uint8_t os_log_type_t;
enum {
  OS_LOG_TYPE_DEFAULT = 0x00,
  OS_LOG_TYPE_INFO = 0x01,
  OS_LOG_TYPE_DEBUG = 0x02,
  OS_LOG_TYPE_ERROR = 0x10,
  OS_LOG_TYPE_FAULT = 0x11,
};

typedef struct os_log_s* os_log_t;
extern "C" struct os_log_s _os_log_default;
#define OS_LOG_DEFAULT (&_os_log_default)

extern "C" bool os_log_type_enabled(os_log_t log, os_log_type_t type);
extern "C" void os_log_record(os_log_t log, os_log_type_t type, const char* format, ...)
    __attribute__((format(os_log, 3, 4)));
// Only a string literal is accepted as the format, as on the device.
#define os_log_with_type(log, type, format, ...) \
  os_log_record(log, type, "" format, ##__VA_ARGS__)
