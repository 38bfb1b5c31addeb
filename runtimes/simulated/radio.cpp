// The adapter and the radios of the machine.
#include "runtimes/simulated/radio.h"

#include "quelvixwinlib_simulated.h"
#include "runtimes/objects/vector.h"

namespace orv::simulated {

using objects::Make;
using objects::Member;
using objects::Property;
using objects::Ref;

namespace {

constexpr UINT64 Machine = 0;

objects::Class adapterClass("BluetoothAdapter");
objects::Class radioClass("Radio");

}  // namespace

SimulatedBluetoothAdapter::SimulatedBluetoothAdapter() : Object(adapterClass) {}

HRESULT SimulatedBluetoothAdapter::GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation) {
    World& world = World::Get();
    Guard guard(world.mutex);
    const Answer answer = world.AnswerOf(guard, Machine, OrvOperation_FindAdapter);
    const bool present = world.state.adapter;
    guard.unlock();
    auto result = [present](IBluetoothAdapter** adapter) {
        return Give(adapter,
                    present ? Make<SimulatedBluetoothAdapter>() : Ref<SimulatedBluetoothAdapter>());
    };
    return StartOperation<BluetoothAdapter>(answer, result, operation);
}

SimulatedRadio::SimulatedRadio(const RadioRecord& radio) : Object(radioClass), record(radio) {}

HRESULT SimulatedRadio::GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) {
    World& world = World::Get();
    Guard guard(world.mutex);
    const Answer answer = world.AnswerOf(guard, Machine, OrvOperation_FindRadios);
    const std::vector<RadioRecord> radios = world.state.radios;
    guard.unlock();
    auto result = [radios](IVectorView<Radio>** view) {
        std::vector<Ref<SimulatedRadio>> items;
        items.reserve(radios.size());
        for (const RadioRecord& radio : radios) {
            items.push_back(Make<SimulatedRadio>(radio));
        }
        return Give(view, Make<objects::VectorView<Radio, SimulatedRadio>>(std::move(items)));
    };
    return StartOperation<IVectorView<Radio>>(answer, result, operation);
}

HRESULT SimulatedRadio::get_State(RadioState* value) {
    static Member member(radioClass.name, "get_State");
    return Property(member, value, record.state);
}

HRESULT SimulatedRadio::get_Kind(RadioKind* value) {
    static Member member(radioClass.name, "get_Kind");
    return Property(member, value, record.kind);
}

}  // namespace orv::simulated
