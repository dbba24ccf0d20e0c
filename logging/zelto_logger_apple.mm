// The platform half of ZeltoLogger on Apple: Foundation for the Documents
// directory and its enumeration, the unified log for records, and nothing
// else. The weftcore log sink belongs to our own host; the device's OS layer
// has none, so on the device records go to the unified log only.
#import <Foundation/Foundation.h>
#include <os/log.h>

#include <string>

#include "logging/zelto_logger_platform.h"

namespace ZeltoLoggerPlatform {

bool LocateSettingsFile(const std::string& settingsFileName, std::string* path) {
  @autoreleasepool {
    NSArray<NSString*>* directories =
        NSSearchPathForDirectoriesInDomains(NSDocumentDirectory, NSUserDomainMask, YES);
    if (directories.count == 0) return false;
    NSString* documents = directories.firstObject;
    NSString* name = [NSString stringWithUTF8String:settingsFileName.c_str()];

    // No match leaves the Documents directory itself, which reads nothing.
    NSString* found = documents;
    // Entries are paths relative to `documents`. The enumerator takes no type
    // argument: GNUstep's Foundation, which the off-Apple compile check uses,
    // does not declare it generic.
    NSDirectoryEnumerator* entries = [[NSFileManager defaultManager] enumeratorAtPath:documents];
    for (NSString* relative in entries) {
      if ([[relative lastPathComponent] isEqualToString:name]) {
        found = [documents stringByAppendingFormat:@"/%@", relative];
        break;
      }
    }
    const char* bytes = [found cStringUsingEncoding:[NSString defaultCStringEncoding]];
    // A path the default C-string encoding cannot hold cannot be opened
    // either; stop here instead of opening a null name.
    if (bytes == nullptr) return false;
    *path = bytes;
    return true;
  }
}

void Emit(ZeltoLogger::PlatformLogType type, const char* tag, const char* message) {
  const os_log_type_t logType = static_cast<os_log_type_t>(type);
  if (os_log_type_enabled(OS_LOG_DEFAULT, logType)) {
    os_log_with_type(OS_LOG_DEFAULT, logType, "[%s] %s", tag, message);
  }
}

}  // namespace ZeltoLoggerPlatform
