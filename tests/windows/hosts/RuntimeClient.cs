using System.Collections.Concurrent;
using System.Runtime.InteropServices.WindowsRuntime;
using Windows.Devices.Bluetooth;
using Windows.Devices.Bluetooth.Advertisement;
using Windows.Devices.Bluetooth.GenericAttributeProfile;
using Windows.Devices.Enumeration;
using Windows.Devices.Radios;
using Windows.Storage.Streams;
using static Hosts.Exchange;

namespace Hosts;

/// <summary>
/// Uses the runtime's classes through the platform's own projection, so that the platform's declarations
/// define the slots and arguments of each call.
/// </summary>
internal static class RuntimeClient
{
    private static readonly Guid ServiceUuid = new("4880c12c-fdcb-4077-8920-a450d7f9b907");
    private static readonly Guid CharacteristicUuid = new("fec26ec4-6d71-4442-9f81-55bc21d658d6");

    public static async Task Run()
    {
        CopyThroughBuffers();
        Check("there is an adapter", await BluetoothAdapter.GetDefaultAsync() is not null);
        Check("its radio is on", await StateOfRadio() == RadioState.On);
        Scan();
        await Connect();
        await SwitchRadio();
    }

    private static IBuffer BufferOf(byte[] bytes)
    {
        var writer = new DataWriter();
        writer.WriteBytes(bytes);
        return writer.DetachBuffer();
    }

    private static void CopyThroughBuffers()
    {
        var buffer = BufferOf([1, 2, 255]);
        var reader = DataReader.FromBuffer(buffer);
        List<byte> read = [];
        while (reader.UnconsumedBufferLength > 0)
        {
            read.Add(reader.ReadByte());
        }
        Check("a buffer's bytes are those written", read is [1, 2, 255] && buffer.ToArray() is [1, 2, 255]);
    }

    private static void Scan()
    {
        ConcurrentBag<string> names = [], sections = [];
        ConcurrentBag<short> signals = [];
        string? failure = null;
        var watcher = new BluetoothLEAdvertisementWatcher { ScanningMode = BluetoothLEScanningMode.Active };
        watcher.Received += (sender, args) =>
        {
            try
            {
                if (args.BluetoothAddress != Address)
                {
                    return;
                }
                signals.Add(args.RawSignalStrengthInDBm);
                if (!args.IsScanResponse)
                {
                    names.Add(args.Advertisement.LocalName);
                    return;
                }
                foreach (var section in args.Advertisement.DataSections)
                {
                    sections.Add(Convert.ToHexString(section.Data.ToArray()));
                }
            }
            catch (Exception exception)
            {
                failure = exception.ToString(); // no exception may reach the runtime
            }
        };
        watcher.Start();
        Check("the device's name is heard", Until(() => names.Contains(Name)));
        Check("its sections are heard", Until(() => Sections.All(sections.Contains)));
        watcher.Stop();
        Check("its signal is what it sends", signals.All(signal => signal is >= -61 and <= -49));
        Check($"the handler does not fail {failure}", failure is null);
    }

    private static async Task Connect()
    {
        using var device = await BluetoothLEDevice.FromBluetoothAddressAsync(Address);
        Check("the device is found", device.BluetoothAddress == Address);
        var services = await device.GetGattServicesForUuidAsync(ServiceUuid, BluetoothCacheMode.Uncached);
        Check("it has the service", services.Status == GattCommunicationStatus.Success && services.Services.Count == 1);
        using var service = services.Services[0];
        Check("access is allowed", await service.RequestAccessAsync() == DeviceAccessStatus.Allowed);
        var found = await service.GetCharacteristicsForUuidAsync(CharacteristicUuid, BluetoothCacheMode.Uncached);
        Check("it has the characteristic",
            found.Status == GattCommunicationStatus.Success && found.Characteristics.Count == 1);
        foreach (var characteristic in found.Characteristics)
        {
            Check("the characteristic knows its device", characteristic.Service.Device.BluetoothAddress == Address);
            await Echo(characteristic);
        }
    }

    private static async Task Echo(GattCharacteristic characteristic)
    {
        var received = new MemoryStream(); // this object is also the lock
        characteristic.ValueChanged += (sender, args) =>
        {
            lock (received)
            {
                received.Write(args.CharacteristicValue.ToArray());
            }
        };
        Check("notifications are switched on", GattCommunicationStatus.Success == await characteristic
            .WriteClientCharacteristicConfigurationDescriptorAsync(
                GattClientCharacteristicConfigurationDescriptorValue.Notify));
        foreach (var block in Blocks)
        {
            if (await characteristic.WriteValueAsync(BufferOf(block)) != GattCommunicationStatus.Success)
            {
                Check("a block is written", false);
            }
        }
        byte[] Echoed()
        {
            lock (received)
            {
                return received.ToArray();
            }
        }
        Check("the echo is what was written", Until(() => Echoed().Length >= Total) && Echoed().SequenceEqual(Data));
    }

    private static async Task<RadioState> StateOfRadio()
    {
        foreach (var radio in await Radio.GetRadiosAsync())
        {
            if (radio.Kind == RadioKind.Bluetooth)
            {
                return radio.State;
            }
        }
        return RadioState.Unknown;
    }

    private static async Task SwitchRadio()
    {
        foreach (var state in new[] { RadioState.Off, RadioState.On })
        {
            var radio = (await Radio.GetRadiosAsync())[0];
            Check($"the radio may be switched {state}", await radio.SetStateAsync(state) == RadioAccessStatus.Allowed);
            Check($"it is {state}", await StateOfRadio() == state);
        }
    }
}
