#include <Base/GCException.h>

#include <memory>
#include <string_view>

#include "Checks.h"
#include "Commands.h"
#include "Description.h"
#include "FeatureReference.h"
#include "FileReplacement.h"

namespace tool {
namespace {

constexpr std::string_view kPagePieces[] = {
#include "FeatureReferencePage.inc"
};
// Stands in the page where its data belongs.
constexpr std::string_view kDataMark = "@REFERENCE@";

struct DocOptions {
  std::string description;
  std::string page;
};

// As the text of a script element: nothing in it may look like the element's end.
std::string scriptText(const Json& json) {
  std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  for (size_t at = text.find("</"); at != text.npos; at = text.find("</", at)) text.replace(at, 2, "<\\/");
  for (size_t at = text.find("<!--"); at != text.npos; at = text.find("<!--", at)) text.replace(at, 2, "\\u003c!");
  return text;
}

std::string page(const Json& reference) {
  std::string text;
  for (const std::string_view piece : kPagePieces) text += piece;
  return text.replace(text.find(kDataMark), kDataMark.size(), scriptText(reference));
}

void run(Session& session, const DocOptions& options) {
  std::string text;
  size_t nodes = 0;
  try {
    const Json reference = featureReference(*loadDescription(session, options.description));
    nodes = reference.at("nodes").size();
    text = page(reference);
  } catch (const GENICAM_NAMESPACE::GenericException& error) {
    throw Failure(kFileFailed, error.what());
  }
  FileReplacement file(options.page);
  file.write(text);
  file.commit();
  if (session.output().json())
    session.output().document({{"page", options.page}, {"nodes", nodes}, {"bytes", text.size()}});
  else
    session.output().line(options.page + ": " + std::to_string(nodes) + " nodes");
}

}  // namespace

void addDoc(const Command& program) {
  auto options = std::make_shared<DocOptions>();
  const Command command = program.subcommand("doc", "Write a page to browse a description's features, for any browser");
  command.option("description", options->description, "Description, XML or zip (default: the device's)")
      .type("FILE")
      .check(existingFile());
  command.option("-o,--output", options->page, "The page; it needs no other file").required().type("FILE");
  command.footer(
      "Example:\n  oxgenapi doc camera.xml -o camera.html\n  oxgenapi --camera 192.168.0.20 doc -o camera.html");
  command.runs([options](Session& session) { run(session, *options); });
}

}  // namespace tool
