// A fresh folder under the system's temp folder, removed with everything in it on destruction.
//   pind::test::TempDir dir; std::string path = dir.Write("a.ini", "[s]\nk=7\n");
#ifndef PIND_TESTS_SUPPORT_TEMPDIR_H_
#define PIND_TESTS_SUPPORT_TEMPDIR_H_

#include <string>

namespace pind::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The folder's path, with '/' separators and no trailing separator.
    const std::string& Path() const { return m_path; }
    /// Path() + "/" + name.
    std::string File(const std::string& name) const { return m_path + "/" + name; }
    /// Writes `bytes` exactly (binary) to `name`, creating sub-folders; returns the file's path.
    std::string Write(const std::string& name, const std::string& bytes) const;
    /// The whole content of `name` (binary), or "" when it cannot be read.
    std::string Read(const std::string& name) const;

private:
    std::string m_path;
};

/// Sets TZ for the life of the object (and re-reads the zone), then restores it.
class ScopedTz {
public:
    explicit ScopedTz(const char* tz);
    ~ScopedTz();
    ScopedTz(const ScopedTz&) = delete;
    ScopedTz& operator=(const ScopedTz&) = delete;

private:
    bool m_had;
    std::string m_old;
};

/// Makes the process's current folder `path` for the life of the object.
class ScopedCurrentDir {
public:
    explicit ScopedCurrentDir(const std::string& path);
    ~ScopedCurrentDir();
    ScopedCurrentDir(const ScopedCurrentDir&) = delete;
    ScopedCurrentDir& operator=(const ScopedCurrentDir&) = delete;

private:
    std::string m_old;
};

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_TEMPDIR_H_
