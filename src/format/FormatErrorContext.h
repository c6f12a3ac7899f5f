// The process-wide site of the formatter error channel: the last format text, file and line, set
// by every formatter built and by CheckFormatArgs.
#ifndef PIND_SRC_FORMAT_FORMATERRORCONTEXT_H_
#define PIND_SRC_FORMAT_FORMATERRORCONTEXT_H_

#include <cstddef>

namespace pind::detail {

/// Makes (format text, file, line) the site of later reports; the file pointer is kept as given.
void SetFormatErrorSite(const char* pszFormat, size_t nLength, const char* pszFile, int nLine);

}  // namespace pind::detail

#endif  // PIND_SRC_FORMAT_FORMATERRORCONTEXT_H_
