#include <gtest/gtest.h>

#include "platform/abi/radios.h"
#include "platform/call.h"
#include "platform/handler.h"

namespace orv {
namespace {

struct Counted : IClosable {
    int references = 1;
    HRESULT answer = S_OK;
    IUnknown* identity = this;

    HRESULT QueryInterface(const GUID* iid, void** object) override {
        *object = nullptr;
        if (*iid != IidOf<IUnknown>) {
            return E_NOINTERFACE;
        }
        identity->AddRef();
        *object = identity;
        return S_OK;
    }
    ULONG AddRef() override { return static_cast<ULONG>(++references); }
    ULONG Release() override { return static_cast<ULONG>(--references); }
    HRESULT GetIids(ULONG*, GUID**) override { return E_NOTIMPL; }
    HRESULT GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
    HRESULT GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }
    HRESULT Close() override { return answer; }
};

TEST(Reference, NullHasNoInterface) {
    EXPECT_THROW(Reference<IClosable>().As<IUnknown>(), PlatformFailure);
}

TEST(Guid, DiffersInEveryPart) {
    const GUID own = IidOf<IClosable>;
    EXPECT_EQ(own, IidOf<IClosable>);
    for (std::size_t byte = 0; byte < sizeof own; ++byte) {
        GUID other = own;
        reinterpret_cast<std::uint8_t*>(&other)[byte] ^= 1;
        EXPECT_FALSE(other == own) << byte;
    }
}

TEST(Reference, CountsOncePerHolder) {
    Counted a;
    Counted b;
    {
        Reference<IClosable> first(&a);
        EXPECT_EQ(a.references, 2);
        Reference<IClosable> copy = first;
        EXPECT_EQ(a.references, 3);
        Reference<IClosable> moved = std::move(copy);
        EXPECT_EQ(a.references, 3);
        EXPECT_FALSE(copy) << "a moved-from reference holds nothing";
        first = *&first;
        EXPECT_EQ(a.references, 3) << "assigned to itself";
        moved = Reference<IClosable>(&b);
        EXPECT_EQ(a.references, 2) << "assignment releases what was held";
        EXPECT_EQ(b.references, 2);
        b.AddRef();
        *moved.Put() = &b;
        EXPECT_EQ(b.references, 2) << "Put releases what was held before";
        first = nullptr;
        EXPECT_EQ(a.references, 1);
        moved.Detach()->Release();
    }
    EXPECT_EQ(a.references, 1);
    EXPECT_EQ(b.references, 1);
}

template <typename Body>
std::string Raised(Body body) {
    try {
        body();
    } catch (const PlatformFailure& failure) {
        return std::to_string(static_cast<UINT32>(failure.code));
    } catch (const std::bad_alloc&) {
        return "bad_alloc";
    }
    return "nothing";
}

TEST(Call, ThrowsTheFailureCode) {
    Counted object;
    const Reference<IClosable> reference(&object);
    const auto close = [](const Reference<IClosable>& on) { Call(on, &IClosable::Close); };
    EXPECT_EQ(Raised([&] { close(reference); }), "nothing");
    object.answer = 1;  // S_FALSE is a success code
    EXPECT_EQ(Raised([&] { close(reference); }), "nothing");
    object.answer = E_BOUNDS;
    EXPECT_EQ(Raised([&] { close(reference); }), std::to_string(0x8000000Bu));
    object.answer = E_OUTOFMEMORY;
    EXPECT_EQ(Raised([&] { close(reference); }), "bad_alloc");
    EXPECT_EQ(Raised([&] { close(nullptr); }), std::to_string(0x80004003u));
    EXPECT_EQ(Raised([&] { reference.As<IRadio>(); }), std::to_string(0x80004002u));
    EXPECT_EQ(object.references, 2) << "a failing call leaves no reference behind";
}

TEST(FindSameObject, ComparesPointersThenIdentities) {
    struct Record {
        Reference<IClosable> object;
    };
    Counted a;
    Counted b;
    Counted otherFaceOfB;
    otherFaceOfB.identity = &b;
    Record records[] = {{Reference<IClosable>(&a)}, {Reference<IClosable>(&b)}};
    struct Range {
        Record* first;
        Record* last;
        Record* begin() { return first; }
        Record* end() { return last; }
        bool empty() const { return first == last; }
    } range{records, records + 2};
    const auto find = [&](Counted* sought) {
        return FindSameObject(range, &Record::object, Reference<IClosable>(sought));
    };
    Counted stranger;
    EXPECT_EQ(find(&a), &records[0]);
    EXPECT_EQ(find(&b), &records[1]);
    EXPECT_EQ(find(&otherFaceOfB), &records[1]);
    EXPECT_EQ(find(&stranger), nullptr);
    EXPECT_EQ(find(nullptr), nullptr);
    for (const Counted* object : {&a, &b}) {
        EXPECT_EQ(object->references, 2) << "the comparison keeps no reference";
    }
}

using Watched = TypedEventHandler<Radio, IInspectable>;

}  // namespace

template <>
inline constexpr GUID IidOf<Watched> = Guid("12345678-0000-0000-0000-000000000000");

namespace {

TEST(Handler, SupportsItsInterfaceAndIsAgile) {
    const auto handler = EventHandler<Radio, IInspectable>::Create(
        [](const Reference<IRadio>&, const Reference<IInspectable>&) noexcept {});
    IUnknown* identity = handler.As<IUnknown>().Get();
    EXPECT_EQ(handler.As<IAgileObject>().Get(), static_cast<void*>(identity));
    EXPECT_EQ(handler.As<Watched>().Get(), handler.Get());
    EXPECT_EQ(Raised([&] { handler.As<IInspectable>(); }), std::to_string(0x80004002u));
    {
        const auto marshaler = handler.As<IMarshal>();
        EXPECT_EQ(marshaler.As<IUnknown>().Get(), identity) << "one object, one identity";
        EXPECT_EQ(handler.As<IMarshal>().Get(), marshaler.Get());
        EXPECT_EQ(handler.Get()->AddRef(), 3u) << "the marshaler counts on the handler";
        handler.Get()->Release();
    }
    EXPECT_EQ(handler.Get()->AddRef(), 2u);
    handler.Get()->Release();
    void* object = nullptr;
    EXPECT_EQ(handler.Get()->QueryInterface(nullptr, &object), E_POINTER);
    EXPECT_EQ(handler.Get()->QueryInterface(nullptr, nullptr), E_POINTER);
}

}  // namespace
}  // namespace orv
