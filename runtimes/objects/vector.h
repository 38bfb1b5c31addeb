// Read-only vectors of runtime objects: functions that change them fail.
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

extern Class iteratorClass;
extern Member iterableFirst;
extern Member iteratorGetCurrent;
extern Member iteratorGetHasCurrent;
extern Member iteratorMoveNext;

// Iterates over a vector once. Like the platform's iterators, it is not thread-safe.
template <typename T, typename Item>
class Iterator final : public Object<IIterator<T>> {
  public:
    explicit Iterator(const std::vector<Ref<Item>>& content)
        : Object<IIterator<T>>(iteratorClass), items(content) {}

    HRESULT get_Current(Abi<T>* item) override {
        return Call(iteratorGetCurrent,
                    [&] { return HasCurrent() ? Give(item, items[position]) : E_BOUNDS; });
    }
    HRESULT get_HasCurrent(boolean* value) override {
        return Property(iteratorGetHasCurrent, value, HasCurrent());
    }
    HRESULT MoveNext(boolean* hasCurrent) override {
        position += HasCurrent();
        return Property(iteratorMoveNext, hasCurrent, HasCurrent());
    }
    HRESULT GetMany(UINT32, Abi<T>*, UINT32*) override {
        return Unexpected(iteratorClass.name, "GetMany");
    }

  private:
    boolean HasCurrent() const { return position < items.size(); }

    const std::vector<Ref<Item>> items;
    std::size_t position = 0;
};

namespace vector_detail {

template <typename Item, typename Interface>
HRESULT GetAt(Member& member, const std::vector<Ref<Item>>& items, UINT32 index, Interface** item) {
    return Call(member, Argument::Number(index),
                [&] { return index < items.size() ? Give(item, items[index]) : E_BOUNDS; });
}

}  // namespace vector_detail

// `Item` is the class that implements the runtime class `T`.
template <typename T, typename Item>
class VectorView final : public Object<IVectorView<T>, IIterable<T>> {
  public:
    explicit VectorView(std::vector<Ref<Item>> content)
        : Object<IVectorView<T>, IIterable<T>>(vectorViewClass), items(std::move(content)) {}

    HRESULT GetAt(UINT32 index, Abi<T>* item) override {
        return vector_detail::GetAt(vectorViewGetAt, items, index, item);
    }
    HRESULT get_Size(UINT32* size) override {
        return Property(vectorViewGetSize, size, static_cast<UINT32>(items.size()));
    }
    HRESULT First(IIterator<T>** iterator) override {
        return Call(iterableFirst, [&] { return Give(iterator, Make<Iterator<T, Item>>(items)); });
    }
    HRESULT IndexOf(Abi<T>, UINT32*, boolean*) override { return Refuse("IndexOf"); }
    HRESULT GetMany(UINT32, UINT32, Abi<T>*, UINT32*) override { return Refuse("GetMany"); }

  private:
    static HRESULT Refuse(const char* name) { return Unexpected(vectorViewClass.name, name); }

    const std::vector<Ref<Item>> items;
};

template <typename T, typename Item>
class Vector final : public Object<IVector<T>, IIterable<T>> {
  public:
    explicit Vector(std::vector<Ref<Item>> content)
        : Object<IVector<T>, IIterable<T>>(vectorClass), items(std::move(content)) {}

    HRESULT GetAt(UINT32 index, Abi<T>* item) override {
        return vector_detail::GetAt(vectorGetAt, items, index, item);
    }
    HRESULT get_Size(UINT32* size) override {
        return Property(vectorGetSize, size, static_cast<UINT32>(items.size()));
    }
    HRESULT First(IIterator<T>** iterator) override {
        return Call(iterableFirst, [&] { return Give(iterator, Make<Iterator<T, Item>>(items)); });
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
