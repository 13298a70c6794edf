#pragma once
// The component platform's binary shapes: GUIDs, result codes, reference-counted interfaces
// found by GUID, and the class factory through which a host creates a component. The host and
// its in-process components are built with the same C++ toolchain, so interfaces are C++
// abstract classes whose first three slots are QueryInterface, AddRef and Release. On Windows
// they are the system's own component shapes: a Windows client calls IUnknown, IClassFactory
// and the entry points through these declarations, so every method carries the system's
// calling convention (KITRA_COM_CALL) and the asserts below hold what such a client relies on.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

// The calling convention of every component interface method and entry point: __stdcall on
// 32-bit Windows (the callee pops its arguments, as every Windows client expects), the
// platform's only convention elsewhere (64-bit Windows and Linux).
#if defined(_WIN32) && !defined(_WIN64)
#define KITRA_COM_CALL __stdcall
#else
#define KITRA_COM_CALL
#endif

namespace kitra::host {

using HResult = std::int32_t;

inline constexpr HResult kOk = 0;
inline constexpr HResult kFalse = 1;
inline constexpr HResult kNoInterface = static_cast<HResult>(0x80004002);
inline constexpr HResult kPointer = static_cast<HResult>(0x80004003);
inline constexpr HResult kFail = static_cast<HResult>(0x80004005);
inline constexpr HResult kOutOfMemory = static_cast<HResult>(0x8007000E);
inline constexpr HResult kNoAggregation = static_cast<HResult>(0x80040110);
inline constexpr HResult kClassNotAvailable = static_cast<HResult>(0x80040111);
inline constexpr HResult kSelfRegClass = static_cast<HResult>(0x80040201);

// A result code as the system writes it: "0x80004005".
inline std::string HResultText(HResult result) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

struct Guid {
    std::uint32_t data1 = 0;
    std::uint16_t data2 = 0;
    std::uint16_t data3 = 0;
    std::uint8_t data4[8] = {};

    bool operator==(const Guid& other) const {
        return data1 == other.data1 && data2 == other.data2 && data3 == other.data3 &&
               std::memcmp(data4, other.data4, sizeof data4) == 0;
    }
};

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper-case hex.
inline std::string GuidToString(const Guid& g) {
    char text[39];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(g.data1), g.data2, g.data3, g.data4[0], g.data4[1],
                  g.data4[2], g.data4[3], g.data4[4], g.data4[5], g.data4[6], g.data4[7]);
    return text;
}

inline std::optional<Guid> GuidFromString(std::string_view text) {
    static constexpr std::string_view kShape = "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    if (text.size() != kShape.size()) return std::nullopt;
    std::string hex;
    for (std::size_t i = 0; i < kShape.size(); ++i) {
        const char c = text[i];
        if (kShape[i] != 'X') {
            if (c != kShape[i]) return std::nullopt;
        } else if (std::isxdigit(static_cast<unsigned char>(c))) {
            hex += c;
        } else {
            return std::nullopt;
        }
    }
    const auto part = [&](std::size_t at, std::size_t n) {
        return static_cast<std::uint32_t>(std::stoul(hex.substr(at, n), nullptr, 16));
    };
    Guid g;
    g.data1 = part(0, 8);
    g.data2 = static_cast<std::uint16_t>(part(8, 4));
    g.data3 = static_cast<std::uint16_t>(part(12, 4));
    for (std::size_t k = 0; k < 8; ++k) g.data4[k] = static_cast<std::uint8_t>(part(16 + 2 * k, 2));
    return g;
}

// The system's GUID is 16 bytes in this order, and interfaces reach a component as bare
// pointers to an object whose first word is its table of methods.
static_assert(sizeof(Guid) == 16 && std::is_standard_layout_v<Guid>);
static_assert(offsetof(Guid, data2) == 4 && offsetof(Guid, data3) == 6 && offsetof(Guid, data4) == 8);
static_assert(sizeof(HResult) == 4);

class IUnknown {
public:
    virtual HResult KITRA_COM_CALL QueryInterface(const Guid& iid, void** object) = 0;
    virtual std::uint32_t KITRA_COM_CALL AddRef() = 0;
    virtual std::uint32_t KITRA_COM_CALL Release() = 0;

protected:
    ~IUnknown() = default;  // objects die through Release, never through delete
};

class IClassFactory : public IUnknown {
public:
    virtual HResult KITRA_COM_CALL CreateInstance(IUnknown* outer, const Guid& iid,
                                                  void** object) = 0;
    // `lock` is the system's 32-bit boolean: nonzero locks, zero unlocks.
    virtual HResult KITRA_COM_CALL LockServer(std::int32_t lock) = 0;

protected:
    ~IClassFactory() = default;
};

inline constexpr Guid kIID_IUnknown{0x00000000, 0x0000, 0x0000,
                                    {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr Guid kIID_IClassFactory{0x00000001, 0x0000, 0x0000,
                                         {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// A client finds QueryInterface, AddRef and Release in the first three slots and nothing
// before the table of methods: no data members, no virtual base.
static_assert(std::is_polymorphic_v<IUnknown> && sizeof(IUnknown) == sizeof(void*));
static_assert(sizeof(IClassFactory) == sizeof(void*));

// The entry points every in-process component module exports (C linkage).
using DllGetClassObjectFn = HResult(KITRA_COM_CALL*)(const Guid& clsid, const Guid& iid,
                                                     void** object);
using DllCanUnloadNowFn = HResult(KITRA_COM_CALL*)();
using DllRegisterServerFn = HResult(KITRA_COM_CALL*)();
using DllUnregisterServerFn = HResult(KITRA_COM_CALL*)();

// An object of the class `clsid` that answers `iid`, made through the class factory that a
// module's DllGetClassObject hands out. Returns the first step's failure (kOk when made);
// `noClass` says whether the module lacks the class.
inline HResult CreateThroughClassFactory(DllGetClassObjectFn getClassObject, const Guid& clsid,
                                         const Guid& iid, void** object, bool& noClass) {
    *object = nullptr;
    IClassFactory* factory = nullptr;
    HResult result = getClassObject(clsid, kIID_IClassFactory, reinterpret_cast<void**>(&factory));
    noClass = result != kOk || factory == nullptr;
    if (noClass) return result != kOk ? result : kClassNotAvailable;
    result = factory->CreateInstance(nullptr, iid, object);
    factory->Release();
    if (result == kOk && *object == nullptr) result = kPointer;
    return result;
}

// Holds one reference to an interface and releases it when it goes.
template <typename Interface>
class ComPtr {
public:
    ComPtr() = default;
    explicit ComPtr(Interface* adopted) : p_(adopted) {}  // takes over an existing reference
    ComPtr(const ComPtr& other) : p_(other.p_) {
        if (p_) p_->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : p_(other.p_) { other.p_ = nullptr; }
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }
    ~ComPtr() { Reset(); }

    void Reset() {
        if (p_) p_->Release();
        p_ = nullptr;
    }
    Interface* Get() const { return p_; }
    Interface* operator->() const { return p_; }
    explicit operator bool() const { return p_ != nullptr; }
    // For out-parameters: releases what is held and hands out the slot.
    void** Out() {
        Reset();
        return reinterpret_cast<void**>(&p_);
    }

private:
    Interface* p_ = nullptr;
};

}  // namespace kitra::host
