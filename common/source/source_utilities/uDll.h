// One shared library opened through the dynamic loader.
#ifndef MORA_LUX_UDLL_H
#define MORA_LUX_UDLL_H

#include <cstdint>
#include <string>

namespace MORA_LUX {

class uDll
{
public:
    /// Stores the path (empty for null) and mode (-1 means lazy binding); loads nothing.
    uDll(const char* path = nullptr, int mode = -1);
    /// Closes the library if it is still loaded.
    ~uDll();
    uDll(const uDll&) = delete;
    uDll& operator=(const uDll&) = delete;

    /// True at once when already loaded. False when no path is known or the
    /// loader fails; the loader's text is kept in GetError() and logged.
    bool Load(const char* path = nullptr, int mode = -1);
    /// Loads "lib<name>.so" (or `name` when it already has ".so") through the
    /// loader's own search. False for a null name, a failed load or a working
    /// directory that can't be read (GetError() says which); never throws.
    bool FindAndLoad(const char* name, int mode = -1);
    /// Null when nothing is loaded or the symbol is missing (GetError() says why).
    void* GetSymbolAddress(const char* name);
    /// False when nothing was loaded or the close failed; the handle is forgotten either way.
    bool Unload();
    bool IsLoaded() const;
    void* GetLibHandle();
    const char* GetPath() const;
    int GetMode() const;
    /// The loader's text of the last failed step; empty after success.
    const char* GetError() const;
    /// Appends the file of the module that holds uDll itself; nothing when no
    /// library is loaded or the query fails.
    std::string& GetModulePath(std::string& out);

    /// True when ".so" occurs in the name (but not for ".so" alone).
    static bool hasExtension(const char* name);
    /// Appends "lib<name>.so", or the name unchanged when it has ".so".
    static std::string& GetPlatformName(std::string& out, const char* name);
    /// Appends the name without its first and last three characters when it has
    /// ".so", else unchanged. The cut is positional: "lib" and ".so" are not checked.
    static std::string& GetUniversalName(std::string& out, const char* name);

    bool InternalLoad(const char* path, int mode);
    void* InternalGetAddress(const char* name, bool setError);

private:
    std::string m_path;
    int32_t m_mode;
    void* m_handle;
    std::string m_error;
};

} // namespace MORA_LUX

#endif
