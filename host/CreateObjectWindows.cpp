// Creating a class through the system's component library: the class must be registered (its
// module's DllRegisterServer, run by regsvr32), and the thread must have initialised the
// component library, as every Windows host's thread has.
#include <windows.h>

#include <objbase.h>

#include "core/Error.h"
#include "core/Text.h"
#include "host/CreateObject.h"

namespace kitra::host {

void* CreateObject(const ClassName& name, const Guid& iid, const std::vector<std::string>&) {
    static_assert(sizeof(GUID) == sizeof(Guid));
    CLSID clsid{};
    const std::wstring progId = WideFromUtf8(name.progId);
    HRESULT result = ::CLSIDFromProgID(progId.c_str(), &clsid);
    if (FAILED(result)) {
        throw Error("A classe '" + name.progId + "' não está registada (" + HResultText(result) +
                    "): registe o seu módulo com regsvr32.");
    }
    void* object = nullptr;
    result = ::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER,
                                reinterpret_cast<const IID&>(iid), &object);
    if (FAILED(result) || object == nullptr) {
        throw Error("Não foi possível criar um objecto da classe '" + name.progId + "' (" +
                    HResultText(result) + ").");
    }
    return object;
}

}  // namespace kitra::host
