#include <memory>

#include "Assignment.h"
#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

struct SetOptions {
  std::vector<std::string> assignments;
  bool keepGoing = false;
};

// A register takes its bytes as get prints them; the library wants "0x" before them and no blanks.
std::string registerText(const std::string& value) {
  if (value.starts_with("0x") || value.starts_with("0X")) return value;
  std::string digits = hexText(parseBytes({value}));
  std::erase(digits, ' ');
  return "0x" + digits;
}

// What the device made of the value, as far as it can be read back.
void show(const Session& session, const Node& node, Json& results) {
  const Output& output = session.output();
  const bool readable = hasValue(node.type()) && node.readable();
  if (output.json()) {
    Json json{{"name", node.name()}};
    if (readable) json["value"] = valueJson(node);
    results.push_back(json);
  } else {
    output.line(output.name(node.name()) + (readable ? " = " + valueText(node) : " written"));
  }
}

void run(Session& session, const SetOptions& options) {
  const std::vector<Assignment> assignments = parseAssignments(options.assignments);
  Json results = Json::array();
  for (const auto& [name, value] : assignments) {
    try {
      const Node node = session.map().node(name);
      node.set(node.type() == NT_Register ? registerText(value) : value);
      show(session, node, results);
    } catch (const Failure& failure) {
      results.push_back(Json{{"name", name}, {"error", toJson(failure)}});
      session.report(failure);
      if (!options.keepGoing) break;  // what follows may depend on it
    }
  }
  if (session.output().json()) session.output().document(results);
}

}  // namespace

void addSet(const Command& program) {
  auto options = std::make_shared<SetOptions>();
  const Command command = program.subcommand("set", "Write features, in the order given, up to the first that fails");
  command.option("assignments", options->assignments, "Values to write").required().type("NAME=VALUE");
  command.flag("-k,--keep-going", options->keepGoing, "Go on after a failure");
  command.footer("Example:\n  oxgenapi set ExposureTime=20000 PixelFormat=Mono12");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
