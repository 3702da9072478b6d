// What shells run to complete a command line. The status 3 asks for files (kWantsFile).
#include "Completion.h"

namespace tool {
namespace {

// bash takes a word apart at "=" and ":" and wants back what belongs behind the last of them.
constexpr const char* kBash = R"(_oxgenapi() {
  local line word prefix= words=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    if [[ ${#words[@]} -gt 0 && ($word == [=:]* || ${words[-1]} == *[=:]) ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
  done
  [[ $COMP_WORDBREAKS == *=* && ${words[-1]} == *[=:]* ]] && prefix=${words[-1]%"${words[-1]##*[=:]}"}
  COMPREPLY=()
  line=$("${COMP_WORDS[0]}" @REQUEST@ "${words[@]}" 2>/dev/null)
  [[ $? -eq 3 ]] && { compopt -o default; return; }
  [[ -n $line ]] && while IFS=$'\t' read -r word _; do COMPREPLY+=("${word#"$prefix"}"); done <<<"$line"
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
}
complete -F _oxgenapi oxgenapi
)";

constexpr const char* kZsh = R"(#compdef oxgenapi
_oxgenapi() {
  local found line word
  local -a plain equals shown
  found=$(${words[1]} @REQUEST@ "${(@)words[2,CURRENT]}" 2>/dev/null)
  [[ $? -eq 3 ]] && { _files; return }
  for line in ${(f)found}; do
    word=${line%%$'\t'*}
    if [[ $word == *= ]]; then equals+=("$word"); else plain+=("$word"); shown+=("${line/$'\t'/  -- }"); fi
  done
  (( $#equals )) && compadd -S '' -a equals
  (( $#plain )) && compadd -l -d shown -a plain
}
compdef _oxgenapi oxgenapi
)";

constexpr const char* kFish = R"(function __oxgenapi_complete
  set -l words (commandline -opc) (commandline -ct)
  set -l found ($words[1] @REQUEST@ $words[2..-1] 2>/dev/null)
  if test $status -eq 3
    __fish_complete_path (commandline -ct)
  else
    test (count $found) -gt 0; and printf '%s\n' $found
  end
end
complete -c oxgenapi -f -a '(__oxgenapi_complete)'
)";

}  // namespace

std::string completionScript(const std::string& shell) {
  constexpr std::string_view kMark = "@REQUEST@";
  std::string script = shell == "bash" ? kBash : shell == "zsh" ? kZsh : kFish;
  return script.replace(script.find(kMark), kMark.size(), kCompletionRequest);
}

}  // namespace tool
