// The packed-resource file system (the engine's VoPackage). The library calls the Vo* functions
// below; they reach the installed IPindPackage, and with none installed every call fails, so files
// come from disk. Backends over a folder and a zip archive live in pind/files/.
//   MyPackage pack; pind::platform::SetPackage(&pack);
#ifndef PIND_PLATFORM_PACKAGE_H_
#define PIND_PLATFORM_PACKAGE_H_

#include <cstdint>

#include "pind/platform/Export.h"

namespace pind::platform {

/// An open packaged file, as the package hands it out.
using PackHandle = void*;

/// One packed-resource archive. Names are as the library passes them (already lower-cased).
class PIND_API IPindPackage {
public:
    virtual ~IPindPackage();
    /// `VoFOpen`: 0 on success with `*handle` set; any other value is a failure.
    virtual int Open(const char* name, PackHandle* handle) = 0;
    /// `VoFGetLen`: length in bytes of an open file.
    virtual uint32_t GetLen(PackHandle handle) = 0;
    /// `VOFRead`: reads up to size × count bytes; returns the bytes read.
    virtual uint32_t Read(void* buffer, uint32_t size, uint32_t count, PackHandle handle) = 0;
    /// `VoFClose`.
    virtual void Close(PackHandle handle) = 0;
    /// `VoFExist`: non-zero when the file is present.
    virtual int Exist(const char* name, int flag) = 0;
    /// `VoFDump`: hands a whole file over; 0 on success with `*buffer`/`*length` set, the buffer
    /// then belongs to the caller until Undump.
    virtual int Dump(const char* name, void** buffer, int32_t* length, int flag) = 0;
    /// `VoFUndump`: takes back a buffer from Dump. Null is ignored.
    virtual void Undump(void* buffer) = 0;
};

/// Installs `package` (null: none); returns the one installed before. Not owned.
PIND_API IPindPackage* SetPackage(IPindPackage* package);
/// The installed package, or null.
PIND_API IPindPackage* GetPackage();

/// The engine entry points. With no package installed: VoFOpen and VoFDump return -1, VoFGetLen,
/// VOFRead and VoFExist return 0, the others do nothing.
PIND_API int VoFOpen(const char* name, PackHandle* handle);
/// The length of the open entry.
PIND_API uint32_t VoFGetLen(PackHandle handle);
/// Reads up to size * count bytes of the entry; returns the number of items read.
PIND_API uint32_t VOFRead(void* buffer, uint32_t size, uint32_t count, PackHandle handle);
/// Closes the entry.
PIND_API void VoFClose(PackHandle handle);
/// Non-zero when the package holds `name`.
PIND_API int VoFExist(const char* name, int flag);
/// Loads the whole entry into a buffer the package allocates; free it with VoFUndump.
PIND_API int VoFDump(const char* name, void** buffer, int32_t* length, int flag);
/// Frees a buffer VoFDump returned.
PIND_API void VoFUndump(void* buffer);

}  // namespace pind::platform

#endif  // PIND_PLATFORM_PACKAGE_H_
