# Doxygen input filter for the public headers. A header's opening comment (its purpose, then an
# indented use) becomes the file's documentation, and the header joins the group of its folder,
# pind/<area>/ (headers directly in pind/ join "library"), so new headers and new area folders
# need nothing added here. Lines are only extended, never added, so warnings keep their line.
#   awk -f docs/header-filter.awk include/pind/logging/Logger.h
FNR == 1 {
    n = split(FILENAME, part, "/")
    area = (n >= 2 && part[n - 1] != "pind") ? part[n - 1] : "library"
    opening = 1
    count = 0
}
opening && /^\/\// {
    text = $0
    sub(/^\/\/ ?/, "", text)
    count++
    code[count] = (text ~ /^  /)
    line[count] = code[count] ? substr(text, 3) : text
    next
}
opening {
    opening = 0
    lastProse = 0
    for (i = 1; i <= count; i++) if (!code[i]) lastProse = i
    # \file and \ingroup each take the rest of their line, so they must end different lines.
    fileAt = (count != lastProse) ? count : 1
    if (fileAt == lastProse) print "/// \\file"
    for (i = 1; i <= count; i++) {
        out = line[i]
        if (code[i] && (i == 1 || !code[i - 1])) out = "\\code " out
        if (code[i] && (i == count || !code[i + 1])) out = out " \\endcode"
        if (i == lastProse) out = out " \\ingroup " area
        if (i == fileAt && fileAt != lastProse) out = out " \\file"
        print "/// " out
    }
    print $0 "  /** \\addtogroup " area " */ /** @{ */"
    next
}
# A group does not reach into a namespace from outside: close it around each namespace block and
# open it again inside, on the same lines. Internal detail namespaces are left out of the reference.
/^namespace [A-Za-z_:]+ \{$/ && !/detail/ {
    print "/** @} */ " $0 " /** \\addtogroup " area " */ /** @{ */"
    next
}
/^}  \/\/ namespace / && !/detail/ {
    print "/** @} */ } /** \\addtogroup " area " */ /** @{ */"
    next
}
{ print }
END { print "/** @} */" }
