#include "Checks.h"
#include "Commands.h"
#include "Lint.h"

namespace tool {
namespace {

constexpr const char* kFooter =
    "One line for each problem: FILE:LINE: SEVERITY: NODE: ELEMENT: REASON; with --json an array of objects with the\n"
    "members file, line, severity, node, element and reason. Severities: note (nothing stops working), defect (one "
    "node\n"
    "or formula cannot be used as meant), fatal (the description does not load).\n"
    "Exit status: 0 nothing or only notes, 1 a defect or a description that does not load, 2 wrong usage.\n"
    "Example:\n"
    "  oxgenapi lint camera.xml\n"
    "  oxgenapi lint --json camera.zip other.xml";

const char* severityName(Severity severity) {
  switch (severity) {
    case Severity::note: return "note";
    case Severity::defect: return "defect";
    case Severity::fatal: return "fatal";
  }
  return "";
}

std::string lineText(const Output& output, const std::string& file, const Problem& problem) {
  const char* severity = severityName(problem.severity);
  std::string text = file + ":" + (problem.line == 0 ? "" : std::to_string(problem.line) + ":") + " ";
  text += problem.severity == Severity::note ? output.dim(severity) : output.bad(severity);
  for (const std::string& part : {output.name(problem.node), problem.element, problem.reason})
    text += part.empty() ? "" : ": " + part;
  return text;
}

void run(Session& session, const std::vector<std::string>& files) {
  const Output& output = session.output();
  Json document = Json::array();
  for (const std::string& file : files) {
    for (const Problem& problem : lint(file)) {
      if (problem.severity != Severity::note) session.fail();
      if (output.json()) {
        document.push_back({{"file", file},
                            {"line", problem.line},
                            {"severity", severityName(problem.severity)},
                            {"node", problem.node},
                            {"element", problem.element},
                            {"reason", problem.reason}});
      } else {
        output.line(lineText(output, file, problem));
      }
    }
  }
  if (output.json()) output.document(document);
}

}  // namespace

void addLint(const Command& program) {
  auto files = std::make_shared<std::vector<std::string>>();
  const Command command =
      program.subcommand("lint", "Check descriptions and print every problem with its line and node");
  command.option("files", *files, "Descriptions: XML, or zip archives with it")
      .required()
      .type("FILE")
      .check(existingFile());
  command.footer(kFooter);
  command.runs([files](Session& session) { run(session, *files); });
}

}  // namespace tool
