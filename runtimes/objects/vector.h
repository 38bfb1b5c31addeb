// Vectors of runtime objects: read-only, and the kind that only looks changeable.
#pragma once

#include <vector>

#include "platform/abi/foundation.h"
#include "runtimes/objects/object.h"

namespace orv::objects {

extern Class vectorViewClass;
extern Member vectorViewGetAt;
extern Member vectorViewGetSize;
extern Class vectorClass;
extern Member vectorGetAt;
extern Member vectorGetSize;

namespace vector_detail {

template <typename Item, typename Interface>
HRESULT GetAt(Member& member, const std::vector<Ref<Item>>& items, UINT32 index, Interface** item) {
    return Call(member, Argument::Number(index),
                [&] { return index < items.size() ? Give(item, items[index]) : E_BOUNDS; });
}

}  // namespace vector_detail

// `Item` is the class that implements the runtime class `T`.
template <typename T, typename Item>
class VectorView final : public Object<IVectorView<T>> {
  public:
    explicit VectorView(std::vector<Ref<Item>> content)
        : Object<IVectorView<T>>(vectorViewClass), items(std::move(content)) {}

    HRESULT GetAt(UINT32 index, Abi<T>* item) override {
        return vector_detail::GetAt(vectorViewGetAt, items, index, item);
    }
    HRESULT get_Size(UINT32* size) override {
        return Property(vectorViewGetSize, size, static_cast<UINT32>(items.size()));
    }
    HRESULT IndexOf(Abi<T>, UINT32*, boolean*) override { return Refuse("IndexOf"); }
    HRESULT GetMany(UINT32, UINT32, Abi<T>*, UINT32*) override { return Refuse("GetMany"); }

  private:
    static HRESULT Refuse(const char* name) { return Unexpected(vectorViewClass.name, name); }

    const std::vector<Ref<Item>> items;
};

template <typename T, typename Item>
class Vector final : public Object<IVector<T>> {
  public:
    explicit Vector(std::vector<Ref<Item>> content)
        : Object<IVector<T>>(vectorClass), items(std::move(content)) {}

    HRESULT GetAt(UINT32 index, Abi<T>* item) override {
        return vector_detail::GetAt(vectorGetAt, items, index, item);
    }
    HRESULT get_Size(UINT32* size) override {
        return Property(vectorGetSize, size, static_cast<UINT32>(items.size()));
    }
    HRESULT GetView(IVectorView<T>**) override { return Refuse("GetView"); }
    HRESULT IndexOf(Abi<T>, UINT32*, boolean*) override { return Refuse("IndexOf"); }
    HRESULT SetAt(UINT32, Abi<T>) override { return Refuse("SetAt"); }
    HRESULT InsertAt(UINT32, Abi<T>) override { return Refuse("InsertAt"); }
    HRESULT RemoveAt(UINT32) override { return Refuse("RemoveAt"); }
    HRESULT Append(Abi<T>) override { return Refuse("Append"); }
    HRESULT RemoveAtEnd() override { return Refuse("RemoveAtEnd"); }
    HRESULT Clear() override { return Refuse("Clear"); }
    HRESULT GetMany(UINT32, UINT32, Abi<T>*, UINT32*) override { return Refuse("GetMany"); }
    HRESULT ReplaceAll(UINT32, Abi<T>*) override { return Refuse("ReplaceAll"); }

  private:
    static HRESULT Refuse(const char* name) { return Unexpected(vectorClass.name, name); }

    const std::vector<Ref<Item>> items;
};

}  // namespace orv::objects
