#!/usr/bin/env bash
# Holds the documents against the code: what they name exists, and what exists is named. documents.sh PROGRAMS, the
# folder with the programs that users start.
set -uo pipefail
programs=$(readlink -f "$1")
cd "$(dirname "$0")/../.."
status=0
fault() { echo "$*"; status=1; }
pages=(*.md docs/*.md)
manuals=(packaging/man/*.[1-9])
# All that a user reads, the manual pages without their escapes.
all=$(cat "${pages[@]}"; sed 's/\\-/-/g; s/\\f[BIRP]//g; s/Fl -/--/g' "${manuals[@]}")
named() { grep -qF -- "$1" <<<"$all"; }
# What stands as code in a page: between backquotes, and in blocks.
code() { awk '/^ *```/ { inside = !inside; next } inside' "$1"; grep -oE '`[^`]+`' "$1" | tr -d '`'; }

# Links, and paths in the sources.
rooms=$(git ls-files 2>/dev/null | sed -n 's|/.*||p' | sort -u | paste -sd'|')
[ -n "$rooms" ] || rooms=$(find . -mindepth 1 -maxdepth 1 -type d -not -name '.*' -not -name build -printf '%f\n' | paste -sd'|')
for page in "${pages[@]}"; do
  while read -r link; do
    [ -e "$(dirname "$page")/${link%%#*}" ] || fault "$page: nothing at $link"
  done < <(grep -oE '\]\([^)#]+|src="[^"]+' "$page" | sed 's/^](//; s/^src="//' | grep -v '^https\?:')
  while read -r path; do
    compgen -G "$path" >/dev/null || compgen -G "$path.*" >/dev/null || fault "$page: there is no $path"
  done < <(code "$page" | grep -oE "(^|[ (]|[.]/)($rooms)/[][A-Za-z0-9_.*/+-]+" | sed 's|^[ (./]*||; s|[.]$||' | grep -vE '/[A-Z_]{2,}([.]|$)' | sort -u)
done

# Commands and flags. flags PROGRAM: "COMMAND FLAG" of all there are, COMMAND being the subcommand's or "-".
flags() {
  local help command
  help=$("$programs/$1" --help)
  grep -oE '^  (-[a-z],)?--[a-z-]+' <<<"$help" | sed 's/.*--/- --/'
  for command in $(sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p' <<<"$help"); do
    echo "$command "
    "$programs/$1" "$command" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | sed "s/.*--/$command --/"
    "$programs/$1" "$command" --help | sed -n "/^Subcommands:/,/^\$/s/^  \([a-z]*\) .*/$command \1/p"
  done
}
for program in velto velto-phone veltoctl velto-rehearse; do
  there=$(flags "$program")
  known=$(awk '$2 ~ /^--/ { print $2 }' <<<"$there" | sort -u)
  called=$program
  [ "$program" != velto-rehearse ] || called='(\./run|velto-rehearse)'
  # What follows the program's name, up to the end of the command.
  said=$(for page in "${pages[@]}"; do code "$page"; done; sed -n 's/\\-/-/g; s/^\$ //p' "${manuals[@]}")
  said=$(grep -oE "(^|[ /(])$called [^|;&#)]*" <<<"$said" | sed -E "s#^.*$called ##; s/\"[^\"]*\"//g")
  for flag in $(grep -oE -- '(^| )--[a-z][a-z-]+' <<<"$said" | sort -u); do
    grep -qxF -- "$flag" <<<"$known" || fault "$program has no $flag"
  done
  for flag in $known; do
    named "$flag" || fault "$program $flag is in no document"
  done
  if [ "$program" = veltoctl ]; then
    for command in $(grep -oE '^[a-z]+' <<<"$said" | sort -u); do
      grep -q "^$command " <<<"$there" || fault "veltoctl has no command $command"
    done
    while read -r command rest; do
      named "$program $command${rest:+ $rest}" || named "$command${rest:+ $rest}" || fault "veltoctl $command $rest is in no document"
    done < <(grep -v -- ' --\|^-' <<<"$there")
  fi
done

# Settings and variables.
keys=$( { grep -oE 'defaults_, "[A-Za-z]+"' VeltoShared/core/AppSettings.cpp
          grep -hE 'k(FilePreference|SettingsTab) =|(active|previousInput|previousOutput)Key =|return "[a-zA-Z]*Host"' VeltoPlatform/linux/*.h \
            VeltoApp/views/models/AppModel.cpp VeltoShared/audio/AudioBridge.cpp VeltoShared/voice/ProviderHosts.cpp
        } | grep -oE '"[^"]+"' | tr -d '"' | sort -u)
for key in $keys; do
  grep -qF "\`\"$key\"\`" docs/settings.md || fault "the setting $key is not in docs/settings.md"
done
for key in $(grep -hE '^\| `"' docs/settings.md | cut -d'|' -f2 | grep -oE '"[^"]+"' | tr -d '"'); do
  grep -qxF "$key" <<<"$keys" || fault "docs/settings.md: there is no setting $key"
done
sources=$(find Velto* veltoctl rehearsal velto-admin-helper -name '*.cpp' -o -name '*.h')
variables=$(grep -hoE '"VELTO_[A-Z_]+"' $sources | tr -d '"' | sort -u)
for variable in $variables; do
  named "$variable" || fault "the variable $variable is in no document"
done
for variable in $(grep -ohE '`VELTO_[A-Z_]+`' "${pages[@]}" | tr -d '`' | sort -u); do
  grep -qwF "$variable" $(find . -name CMakeLists.txt -not -path './build/*') cmake/* $sources || fault "nothing reads $variable"
done

# Programs, scripts, pages, benchmarks, scenarios.
for program in $(grep -hoE 'install\(TARGETS [a-z -]+' packaging/CMakeLists.txt velto-admin-helper/CMakeLists.txt | sed 's/.*TARGETS//'); do
  named "\`$program\`" || fault "the program $program is in no document"
done
for script in run test measure lint packaging/deb packaging/try-* mac/bundle docs/*.sh; do
  named "$script" || fault "$script is in no document"
done
for page in docs/*.md KNOWN_RISKS.md ARCHITECTURE.md CONTRIBUTING.md; do
  grep -qF "($page)" README.md || fault "README.md does not lead to $page"
done
for name in $(grep -rhoE '\b[a-z]+_bench\b' bench --include=CMakeLists.txt | sed 's/_bench//' | sort -u) \
  $(basename -s .json -a rehearsal/scenarios/*.json); do
  named "\`$name\`" || fault "$name is in no document"
done
exit $status
