#include "weftcore/host/configuration.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace weftcore {
namespace host {
namespace {

using Json = nlohmann::json;

Status ConfigurationError(const std::string& message) {
  return Status(kLevelError, kCauseInvalidArgument, "%s", message.c_str()).SetBlock("core");
}

// Reads the string member `name` of `object` (described by `where`).
Status RequiredString(const Json& object, const char* name, const std::string& where,
                      std::string* value) {
  const auto member = object.find(name);
  if (member == object.end()) {
    return ConfigurationError(where + " has no \"" + name + "\"");
  }
  if (!member->is_string()) {
    return ConfigurationError(where + ": \"" + name + "\" must be a string");
  }
  *value = member->get<std::string>();
  if (value->empty()) return ConfigurationError(where + ": \"" + name + "\" is empty");
  return Status();
}

// Scalars become their text ("5", "true"); strings stay as they are.
Status ParseArguments(const Json& args, const std::string& where, ComponentArgument* arguments) {
  if (!args.is_object()) return ConfigurationError(where + ": \"args\" must be an object");
  for (const auto& [key, value] : args.items()) {
    if (value.is_string()) {
      arguments->values[key] = value.get<std::string>();
    } else if (value.is_primitive() && !value.is_null()) {
      arguments->values[key] = value.dump();
    } else {
      return ConfigurationError(where + ": argument \"" + key +
                                "\" must be a string, number or boolean");
    }
  }
  return Status();
}

Status ParseComponents(const Json& components, HostConfiguration* configuration) {
  if (!components.is_object()) return ConfigurationError("\"components\" must be an object");
  for (const auto& [name, entry] : components.items()) {
    const std::string where = "component \"" + name + "\"";
    if (!entry.is_object()) return ConfigurationError(where + " must be an object");
    ComponentEntry component;
    Status status = RequiredString(entry, "library", where, &component.library);
    if (status.IsError()) return status;
    const auto args = entry.find("args");
    if (args != entry.end()) {
      status = ParseArguments(*args, where, &component.args);
      if (status.IsError()) return status;
    }
    configuration->components[name] = std::move(component);
  }
  return Status();
}

Status ParseStreams(const Json& streams, HostConfiguration* configuration) {
  if (!streams.is_object()) return ConfigurationError("\"streams\" must be an object");
  for (const auto& [key, entry] : streams.items()) {
    const std::string where = "stream \"" + key + "\"";
    if (!entry.is_object()) return ConfigurationError(where + " must be an object");
    StreamEntry stream;
    Status status = RequiredString(entry, "component", where, &stream.component);
    if (status.IsError()) return status;
    status = RequiredString(entry, "type", where, &stream.type);
    if (status.IsError()) return status;
    configuration->streams[key] = std::move(stream);
  }
  return Status();
}

}  // namespace

Status ParseConfiguration(const std::string& json_text, HostConfiguration* configuration) {
  if (configuration == nullptr) {
    return Status(kLevelError, kCauseInvalidArgument, "configuration is null").SetBlock("core");
  }
  Json document;
  try {
    document = Json::parse(json_text);
  } catch (const Json::exception& e) {
    return ConfigurationError(std::string("configuration is not valid JSON: ") + e.what());
  }
  if (!document.is_object()) return ConfigurationError("configuration must be a JSON object");

  // Components may be absent: a host can serve every stream from components
  // registered in-process.
  HostConfiguration parsed;
  const auto components = document.find("components");
  if (components != document.end()) {
    Status status = ParseComponents(*components, &parsed);
    if (status.IsError()) return status;
  }
  const auto streams = document.find("streams");
  if (streams == document.end()) return ConfigurationError("configuration has no \"streams\"");
  Status status = ParseStreams(*streams, &parsed);
  if (status.IsError()) return status;
  *configuration = std::move(parsed);
  return Status();
}

Status LoadConfigurationFile(const std::string& path, HostConfiguration* configuration) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    return Status(kLevelError, kCauseNotFound, "cannot open configuration file %s: %s",
                  path.c_str(), std::strerror(EISDIR))
        .SetBlock("core");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    const int error = errno;
    return Status(kLevelError, kCauseNotFound, "cannot open configuration file %s: %s",
                  path.c_str(), std::strerror(error))
        .SetBlock("core");
  }
  std::ostringstream text;
  text << file.rdbuf();
  Status status = ParseConfiguration(text.str(), configuration);
  if (status.IsError()) {
    return Status(kLevelError, status.cause(), "configuration file %s: %s", path.c_str(),
                  status.message().c_str())
        .SetBlock("core");
  }
  return Status();
}

}  // namespace host
}  // namespace weftcore
