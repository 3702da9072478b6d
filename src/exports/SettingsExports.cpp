#include <cstring>
#include <istream>
#include <ostream>
#include <sstream>

#include "ExportFrame.h"
#include "HostFile.h"
#include "NodeMapSerializer.h"
#include "OxGenApi/NodeMap.h"
#include "SettingsReport.h"
#include "Text.h"

namespace orxGenApi {
namespace {

using FeatureNames = NodeMapSerializer::FeatureNames;

// Runs the work with a serializer over what is loaded at the moment, which stays for the whole operation.
template <class Work, class... NamesAndValues>
uint32_t withSerializer(NODEMAP handle, const Arguments<NamesAndValues...>& arguments, TSettingsCallback callback,
                        void* userData, Work&& work) {
  return onObject<NodeMapBase>(handle, arguments, [&](NodeMapBase& nodeMap) {
    return guardedExport(arguments, kAsking, [&] {
      const std::shared_ptr<LoadedMap> load = nodeMap.loaded();
      SettingsReport report(nodeMap, load, callback, userData);
      NodeMapSerializer serializer(load ? load->map() : nullptr, report);
      work(serializer);
      return OXGENAPI_OK;
    });
  });
}

// Which features a save is about: all that are streamable, or those of a list "Width|Height".
struct Selection {
  bool all = true;
  const char* names = nullptr;

  void save(NodeMapSerializer& serializer, std::ostream& output, const FeatureNames& listed) const {
    if (all) {
      serializer.SaveSet(output);
    } else {
      serializer.SaveSet(listed, output);
    }
  }

  // Throws orx_error for a list without names.
  FeatureNames list() const {
    FeatureNames listed;
    if (all) return listed;
    std::string_view rest = names == nullptr ? std::string_view() : names;
    while (!rest.empty()) {
      const std::string_view name = rest.substr(0, rest.find('|'));
      if (!name.empty()) listed.emplace_back(name);
      rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    if (listed.empty()) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "No feature names");
    return listed;
  }
};

void saveToFile(NodeMapSerializer& serializer, const char* path, const Selection& selection) {
  const FeatureNames listed = selection.list();
  HostFileWriter file(path);
  if (!file.isOpen()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not readable");
  std::ostream output(&file);
  selection.save(serializer, output, listed);
  const bool complete = file.close();
  if (output.fail() || !complete) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not writable");
}

std::string savedText(NodeMapSerializer& serializer, const Selection& selection) {
  const FeatureNames listed = selection.list();
  std::ostringstream output;
  selection.save(serializer, output, listed);
  if (output.bad()) throw std::bad_alloc();  // a text in memory fails for no other reason
  return std::move(output).str();
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

template <class Character, class... NamesAndValues>
uint32_t saveToBuffer(NODEMAP handle, const Arguments<NamesAndValues...>& arguments, Character* buffer, size_t* size,
                      const Selection& selection, TSettingsCallback callback, void* userData) {
  return withSerializer(handle, arguments, callback, userData, [&](NodeMapSerializer& serializer) {
    if (size == nullptr) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
    copySettings(savedText(serializer, selection), buffer, *size);
  });
}

void loadFromFile(NodeMapSerializer& serializer, const char* path, bool validate) {
  HostFileReader file(path);
  if (!file.isReadable()) throw orx_error(OXGENAPI_E_RUNTIME, "Filename not readable");
  std::istream input(&file);
  serializer.LoadSet(input, validate);
}

void loadFromText(NodeMapSerializer& serializer, const char* text, bool validate) {
  if (text == nullptr) throw orx_error(OXGENAPI_E_RUNTIME, "String not readable");
  std::istringstream input{std::string(text)};
  serializer.LoadSet(input, validate);
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
  const auto arguments =
      args("NodeMap", NodeMap, "Filename", Filename, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate,
                        [&](NodeMapSerializer& serializer) { loadFromFile(serializer, Filename, Validate); });
}

uint32_t NMLoadSetExW(NODEMAP NodeMap, const wchar_t* Filename, bool Validate, TSettingsCallback Callback,
                      void* pPrivate) {
  const auto arguments =
      args("NodeMap", NodeMap, "Filename", Filename, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    loadFromFile(serializer, toNarrow(Filename).c_str(), Validate);
  });
}

uint32_t NMLoadSetString(NODEMAP NodeMap, const char* Settings, bool Validate, TSettingsCallback Callback,
                         void* pPrivate) {
  const auto arguments =
      args("NodeMap", NodeMap, "Settings", Settings, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate,
                        [&](NodeMapSerializer& serializer) { loadFromText(serializer, Settings, Validate); });
}

uint32_t NMLoadSetStringW(NODEMAP NodeMap, const wchar_t* Settings, bool Validate, TSettingsCallback Callback,
                          void* pPrivate) {
  const auto arguments =
      args("NodeMap", NodeMap, "Settings", Settings, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    loadFromText(serializer, Settings == nullptr ? nullptr : toNarrow(Settings).c_str(), Validate);
  });
}

uint32_t NMSaveSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate,
                        [&](NodeMapSerializer& serializer) { saveToFile(serializer, Filename, {}); });
}

uint32_t NMSaveSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback, void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate,
                        [&](NodeMapSerializer& serializer) { saveToFile(serializer, toNarrow(Filename).c_str(), {}); });
}

uint32_t NMSaveSetEx(NODEMAP NodeMap, const char* Filename, const char* FeatureNames, TSettingsCallback Callback,
                     void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "FeatureNames", FeatureNames, "Callback",
                              Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    saveToFile(serializer, Filename, {.all = false, .names = FeatureNames});
  });
}

uint32_t NMSaveSetExW(NODEMAP NodeMap, const wchar_t* Filename, const wchar_t* FeatureNames, TSettingsCallback Callback,
                      void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Filename", Filename, "FeatureNames", FeatureNames, "Callback",
                              Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    const std::string names = toNarrow(FeatureNames);
    saveToFile(serializer, toNarrow(Filename).c_str(), {.all = false, .names = names.c_str()});
  });
}

uint32_t NMSaveSetString(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                         void* pPrivate) {
  return saveToBuffer(NodeMap,
                      args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "Callback", Callback,
                           "pPrivate", pPrivate),
                      Settings, SettingsSize, {}, Callback, pPrivate);
}

uint32_t NMSaveSetStringW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                          void* pPrivate) {
  return saveToBuffer(NodeMap,
                      args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "Callback", Callback,
                           "pPrivate", pPrivate),
                      Settings, SettingsSize, {}, Callback, pPrivate);
}

uint32_t NMSaveSetStringEx(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, const char* FeatureNames,
                           TSettingsCallback Callback, void* pPrivate) {
  return saveToBuffer(NodeMap,
                      args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "FeatureNames",
                           FeatureNames, "Callback", Callback, "pPrivate", pPrivate),
                      Settings, SettingsSize, {.all = false, .names = FeatureNames}, Callback, pPrivate);
}

uint32_t NMSaveSetStringExW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, const wchar_t* FeatureNames,
                            TSettingsCallback Callback, void* pPrivate) {
  const auto arguments = args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "FeatureNames",
                              FeatureNames, "Callback", Callback, "pPrivate", pPrivate);
  return withSerializer(NodeMap, arguments, Callback, pPrivate, [&](NodeMapSerializer& serializer) {
    if (SettingsSize == nullptr) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
    const std::string names = toNarrow(FeatureNames);
    copySettings(savedText(serializer, {.all = false, .names = names.c_str()}), Settings, *SettingsSize);
  });
}
