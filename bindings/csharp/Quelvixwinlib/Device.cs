using System;
using System.Threading;
using System.Threading.Tasks;

namespace Quelvixwinlib;

/// <summary>One device and its latest values; the C header describes them.</summary>
public sealed class Device
{
    private readonly byte[] data1118;

    internal unsafe Device(in Native.DiscoveredDevice record)
    {
        Address = OrvAddress.Format(record.address);
        Rssi = record.rssi;
        Value0500 = record.value0500;
        Value1130 = record.value1130;
        data1118 = new byte[16];
        fixed (byte* name = record.name, data = record.data1118)
        {
            var length = 0;
            while (name[length] != 0)
            {
                ++length; // the library ends every name with a zero
            }
            Name = System.Text.Encoding.UTF8.GetString(name, length);
            for (var at = 0; at < data1118.Length; ++at)
            {
                data1118[at] = data[at];
            }
        }
    }

    /// <summary>The address, such as A0:B1:C2:D3:E4:F5.</summary>
    public string Address { get; }

    /// <summary>The name. The device chooses it, so it may contain any character.</summary>
    public string Name { get; }

    /// <summary>The signal strength in dBm.</summary>
    public short Rssi { get; }

    /// <summary>The value of key 0x0500; 0xFF until a scan response has set it.</summary>
    public byte Value0500 { get; }

    /// <summary>The value of key 0x1130; 0xFF until a scan response has set it.</summary>
    public byte Value1130 { get; }

    /// <summary>The value of key 0x1118, 16 bytes; zeros until a scan response has set them.</summary>
    public byte[] Data1118 => (byte[])data1118.Clone();

    /// <summary>Connects to the device.</summary>
    public DeviceStream Connect() => DeviceStream.Connect(Address);

    /// <summary>Connects to the device on another thread.</summary>
    public Task<DeviceStream> ConnectAsync(CancellationToken cancellation = default) =>
        DeviceStream.ConnectAsync(Address, cancellation);
}
