#!/usr/bin/env bash
# Builds the HTML reference of the public headers into build/docs/html with Doxygen: the README as
# the main page and one page per area folder of include/pind/. Warnings (an undocumented public
# function, a bad reference) are listed at the end as file:line: text; --werror makes them fail.
#   scripts/docs.sh             # then open build/docs/html/index.html
#   scripts/docs.sh --werror    # as CI runs it
set -euo pipefail
cd "$(dirname "$0")/.."
werror=0
[ "${1:-}" = "--werror" ] && werror=1

if ! command -v doxygen >/dev/null; then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo="sudo"
    echo "docs: installing doxygen"
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends doxygen >/dev/null
fi

out=$PWD/build/docs
rm -rf "$out"
mkdir -p "$out"
warnings=$out/warnings.log

# One group per area folder, titled from docs/areas.txt.
areas=$out/areas.dox
problems=()
for area in library $(cd include/pind && ls -d -- */ | tr -d /); do
    row=$(awk -F'\t' -v a="$area" '$1 == a { print; exit }' docs/areas.txt)
    if [ -z "$row" ]; then
        problems+=("docs/areas.txt:1: warning: area folder include/pind/$area/ has no line here")
        row="$area	$area	Headers in pind/$area/."
    fi
    IFS=$'\t' read -r _ title text <<<"$row"
    printf '/// \\defgroup %s %s\n/// %s\n\n' "$area" "$title" "$text" >>"$areas"
done

version=$(sed -n 's/^project(PindBase VERSION \([^ ]*\).*/\1/p' CMakeLists.txt)
PIND_VERSION=$version PIND_DOCS_OUT=$out PIND_DOCS_AREAS=$areas doxygen docs/Doxyfile

# Doxygen reports a grouped member once per page it appears on: list each warning once, with the
# path relative to the repository.
{
    printf '%s\n' "${problems[@]+"${problems[@]}"}"
    sed "s|^$PWD/||" "$warnings"
} | grep -v '^$' | sort -t: -k1,1 -k2,2n | uniq >"$warnings.sorted" || true
mv "$warnings.sorted" "$warnings"
count=$(wc -l <"$warnings")
echo "docs: $out/html/index.html ($count warnings)"
if [ "$count" -gt 0 ]; then
    cat "$warnings"
    if [ "$werror" -eq 1 ]; then
        echo "docs: warnings are errors (--werror): document what is listed above in the headers"
        exit 1
    fi
fi
