#include <algorithm>
#include <istream>
#include <new>
#include <ostream>
#include <sstream>
#include <type_traits>

#include "ExportFrame.h"
#include "HostFile.h"
#include "LastError.h"
#include "NodeMapSerializer.h"
#include "OxGenApi/NodeMap.h"
#include "SettingsReport.h"
#include "Text.h"

namespace orxGenApi {
namespace {

// Runs the work with a serializer over what is loaded at the moment, which stays for the whole operation.
template <class Work, class... NamesAndValues>
uint32_t withSerializer(NODEMAP handle, const Arguments<NamesAndValues...>& arguments, TSettingsCallback callback,
                        void* userData, Work&& work) {
  return onObject<NodeMapBase>(handle, arguments, [&](NodeMapBase& nodeMap) {
    return guardedExport(arguments, kAsking, [&] {
      const std::shared_ptr<LoadedMap> load = nodeMap.loaded();
      SettingsReport report(nodeMap, load, callback, userData);
      NodeMapSerializer serializer(load ? load->map() : nullptr, report);
      try {
        work(serializer);
      } catch (const orx_error& fault) {
        if (!report.hasSentError()) throw;
        ensureLastError(fault.code(), fault.what());  // the callback may have changed it
        return fault.code();
      }
      return OXGENAPI_OK;
    });
  });
}

// The names of a list "Width|Height". Throws orx_error for a list without names.
NodeMapSerializer::FeatureNames namesOf(std::string_view list) {
  NodeMapSerializer::FeatureNames names;
  while (!list.empty()) {
    const std::string_view name = list.substr(0, list.find('|'));
    if (!name.empty()) names.emplace_back(name);
    list.remove_prefix(std::min(name.size() + 1, list.size()));
  }
  if (names.empty()) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "No feature names");
  return names;
}

// Saving all that is streamable, or what a list names; the list is looked at before anything else is done.
struct Everything {
  void operator()(NodeMapSerializer& serializer, std::ostream& output) const { serializer.SaveSet(output); }
};
struct Listed {
  template <class Character>
  explicit Listed(const Character* list) : names(namesOf(parameterText(list))) {}
  void operator()(NodeMapSerializer& serializer, std::ostream& output) const { serializer.SaveSet(names, output); }
  NodeMapSerializer::FeatureNames names;
};

template <class Save>
void saveToFile(NodeMapSerializer& serializer, const std::string& path, const Save& save) {
  HostFileWriter file(path.c_str());
  if (!file.isOpen()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not readable");
  std::ostream output(&file);
  save(serializer, output);
  const bool complete = file.close();
  if (output.fail() || !complete) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not writable");
}

// The rule of settings buffers: the size becomes what the text would take at most; no zero is added.
template <class Character>
void copySettings(const std::string& text, Character* buffer, size_t& size) {
  if (buffer == nullptr) {
    size = text.size() + 1;
    return;
  }
  size = std::min(size, text.size() + 1);
  const size_t count = std::min(size, text.size());
  for (size_t i = 0; i < count; ++i) buffer[i] = static_cast<Character>(static_cast<unsigned char>(text[i]));
  if constexpr (!std::is_same_v<Character, char>) {
    // The wide forms terminate a text that is shorter than its buffer.
    if (size > count) buffer[count] = Character{};
  }
}

template <class Character, class Save>
void saveToBuffer(NodeMapSerializer& serializer, Character* buffer, size_t* size, const Save& save) {
  if (size == nullptr) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
  std::ostringstream output;
  save(serializer, output);
  if (output.fail()) throw std::bad_alloc();  // a text in memory fails for no other reason
  copySettings(std::move(output).str(), buffer, *size);
}

// What the narrow and the wide form of an export share.

template <class Character>
uint32_t loadFile(NODEMAP NodeMap, const Character* Filename, bool Validate, TSettingsCallback Callback,
                  void* pPrivate) {
  const auto arguments =
      args("NodeMap", NodeMap, "Filename", Filename, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    HostFileReader file(parameterText(Filename).c_str());
    if (!file.isReadable()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not readable");
    std::istream input(&file);
    serializer.LoadSet(input, Validate);
  });
}

template <class Character>
uint32_t loadText(NODEMAP NodeMap, const Character* Settings, bool Validate, TSettingsCallback Callback,
                  void* pPrivate) {
  const auto arguments =
      args("NodeMap", NodeMap, "Settings", Settings, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    if (Settings == nullptr) throw orx_error(OXGENAPI_E_RUNTIME, "String not readable");
    std::istringstream input(parameterText(Settings));
    serializer.LoadSet(input, Validate);
  });
}

template <class Character>
uint32_t saveFile(NODEMAP NodeMap, const Character* Filename, TSettingsCallback Callback, void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    saveToFile(serializer, parameterText(Filename), Everything());
  });
}

template <class Character>
uint32_t saveFile(NODEMAP NodeMap, const Character* Filename, const Character* FeatureNames, TSettingsCallback Callback,
                  void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "FeatureNames", FeatureNames, "Callback",
                              Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    saveToFile(serializer, parameterText(Filename), Listed(FeatureNames));
  });
}

template <class Character>
uint32_t saveText(NODEMAP NodeMap, Character* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                  void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "Callback",
                              Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    saveToBuffer(serializer, Settings, SettingsSize, Everything());
  });
}

template <class Character>
uint32_t saveText(NODEMAP NodeMap, Character* Settings, size_t* SettingsSize, const Character* FeatureNames,
                  TSettingsCallback Callback, void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "FeatureNames",
                              FeatureNames, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    saveToBuffer(serializer, Settings, SettingsSize, Listed(FeatureNames));
  });
}

}  // namespace
}  // namespace orxGenApi

using namespace orxGenApi;

uint32_t NMLoadSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate) {
  return NMLoadSetEx(NodeMap, Filename, false, Callback, pPrivate);
}

uint32_t NMLoadSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback, void* pPrivate) {
  return NMLoadSetExW(NodeMap, Filename, false, Callback, pPrivate);
}

uint32_t NMLoadSetEx(NODEMAP NodeMap, const char* Filename, bool Validate, TSettingsCallback Callback, void* pPrivate) {
  return loadFile(NodeMap, Filename, Validate, Callback, pPrivate);
}

uint32_t NMLoadSetExW(NODEMAP NodeMap, const wchar_t* Filename, bool Validate, TSettingsCallback Callback,
                      void* pPrivate) {
  return loadFile(NodeMap, Filename, Validate, Callback, pPrivate);
}

uint32_t NMLoadSetString(NODEMAP NodeMap, const char* Settings, bool Validate, TSettingsCallback Callback,
                         void* pPrivate) {
  return loadText(NodeMap, Settings, Validate, Callback, pPrivate);
}

uint32_t NMLoadSetStringW(NODEMAP NodeMap, const wchar_t* Settings, bool Validate, TSettingsCallback Callback,
                          void* pPrivate) {
  return loadText(NodeMap, Settings, Validate, Callback, pPrivate);
}

uint32_t NMSaveSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate) {
  return saveFile(NodeMap, Filename, Callback, pPrivate);
}

uint32_t NMSaveSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback, void* pPrivate) {
  return saveFile(NodeMap, Filename, Callback, pPrivate);
}

uint32_t NMSaveSetEx(NODEMAP NodeMap, const char* Filename, const char* FeatureNames, TSettingsCallback Callback,
                     void* pPrivate) {
  return saveFile(NodeMap, Filename, FeatureNames, Callback, pPrivate);
}

uint32_t NMSaveSetExW(NODEMAP NodeMap, const wchar_t* Filename, const wchar_t* FeatureNames, TSettingsCallback Callback,
                      void* pPrivate) {
  return saveFile(NodeMap, Filename, FeatureNames, Callback, pPrivate);
}

uint32_t NMSaveSetString(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                         void* pPrivate) {
  return saveText(NodeMap, Settings, SettingsSize, Callback, pPrivate);
}

uint32_t NMSaveSetStringW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                          void* pPrivate) {
  return saveText(NodeMap, Settings, SettingsSize, Callback, pPrivate);
}

uint32_t NMSaveSetStringEx(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, const char* FeatureNames,
                           TSettingsCallback Callback, void* pPrivate) {
  return saveText(NodeMap, Settings, SettingsSize, FeatureNames, Callback, pPrivate);
}

uint32_t NMSaveSetStringExW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, const wchar_t* FeatureNames,
                            TSettingsCallback Callback, void* pPrivate) {
  return saveText(NodeMap, Settings, SettingsSize, FeatureNames, Callback, pPrivate);
}
