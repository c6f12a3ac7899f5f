#!/usr/bin/env bash
# Builds the HTML reference of the public headers into build/docs/html with Doxygen: the README as
# the main page and one page per area folder of include/pind/. Warnings (an undocumented public
# function, a bad reference) are listed at the end as file:line: text; --werror makes new ones fail
# (docs/known-warnings.txt lists those still owed).
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
} | grep -v '^$' | sort -u -t: -k1,1 -k2,2n >"$warnings.sorted" || true
mv "$warnings.sorted" "$warnings"
# Warnings already on the list in docs/known-warnings.txt (the same text without the line number)
# are the documentation still owed; --werror fails only on the others, so none are added.
keys=$out/warnings.keys
sed -E 's/^([^:]*):[0-9]+: /\1: /' "$warnings" | sort -u >"$keys"
grep -v '^#' docs/known-warnings.txt | sort -u >"$out/known.keys"
comm -23 "$keys" "$out/known.keys" >"$out/new.keys"
count=$(wc -l <"$warnings")
new=$(wc -l <"$out/new.keys")
fixed=$(comm -13 "$keys" "$out/known.keys" | wc -l)
echo "docs: $out/html/index.html ($count warnings, $new not in docs/known-warnings.txt)"
[ "$fixed" -eq 0 ] || echo "docs: $fixed entries of docs/known-warnings.txt are fixed: delete them there"
if [ "$new" -gt 0 ]; then
    while IFS= read -r line; do
        key=$(sed -E 's/^([^:]*):[0-9]+: /\1: /' <<<"$line")
        if grep -qxF -- "$key" "$out/new.keys"; then echo "$line"; fi
    done <"$warnings"
    if [ "$werror" -eq 1 ]; then
        echo "docs: warnings are errors (--werror): document what is listed above"
        exit 1
    fi
fi
