#include <memory>

#include "Commands.h"
#include "Value.h"

namespace tool {
namespace {

struct GetOptions {
  std::vector<std::string> names;
  bool bare = false;
};

Json describe(const Node& node) {
  Json json{{"name", node.name()}, {"type", typeName(node.type())}, {"value", valueJson(node)}};
  if (node.type() == NT_Integer || node.type() == NT_Float) {
    if (const std::string unit = node.infoText(NI_Unit); !unit.empty()) json["unit"] = unit;
  }
  return json;
}

// What a script wants on a line of its own: no unit, no quotes.
std::string bareText(const Node& node) {
  const Json value = valueJson(node);
  return value.is_string() ? value.get<std::string>() : value.dump();
}

void run(Session& session, const GetOptions& options) {
  const Output& output = session.output();
  Json results = Json::array();
  for (const std::string& name : options.names) {
    try {
      const Node node = session.map().node(name);
      if (output.json())
        results.push_back(describe(node));
      else if (options.bare)
        output.data(bareText(node) + '\n');
      else
        output.line(output.name(name) + " = " + valueText(node));
    } catch (const Failure& failure) {
      results.push_back(Json{{"name", name}, {"error", toJson(failure)}});
      session.report(failure);
    }
  }
  if (output.json()) output.document(results);
}

}  // namespace

void addGet(const Command& program) {
  auto options = std::make_shared<GetOptions>();
  const Command command = program.subcommand("get", "Read features");
  command.option("names", options->names, "Features to read").required().type("NAME");
  command.flag("-b,--bare", options->bare, "Print the values only");
  command.footer("Example:\n  oxgenapi get ExposureTime Gain");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
