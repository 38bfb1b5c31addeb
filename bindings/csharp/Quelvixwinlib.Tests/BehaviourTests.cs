using System.Text.Json.Nodes;
using Xunit;

[assembly: CollectionBehavior(DisableTestParallelization = true)] // all tests of a process use one simulated world

namespace Quelvixwinlib.Tests;

/// <summary>Tests the behaviours in the file ORV_BEHAVIOURS, which all bindings share, and features of C# alone.</summary>
public sealed class BehaviourTests
{
    private const string Echo = """
        {"title": "echo", "devices": [
          {"address": "A0:B1:C2:D3:E4:F5", "name": "ORV-0042", "interval": 100, "echo": 15}]}
        """;

    private static JsonArray Load(string variable) =>
        JsonNode.Parse(File.ReadAllText(Environment.GetEnvironmentVariable(variable)!))!.AsArray();

    public static IEnumerable<object[]> Names() =>
        Load("ORV_BEHAVIOURS").Select(behaviour => new object[] { (string)behaviour!["name"]! });

    [Theory]
    [MemberData(nameof(Names))]
    public void Behaviour(string name)
    {
        var behaviour = Load("ORV_BEHAVIOURS").Single(one => (string)one!["name"]! == name)!;
        SimulatedWorld.Play(behaviour["world"]!.ToJsonString());
        new Run().Steps(behaviour["steps"]!.AsArray());
    }

    [Fact]
    public async Task AsyncCallsRunOnThreadsOfTheirOwn()
    {
        SimulatedWorld.Play(Echo);
        var device = Assert.Single(await Scanner.ScanAsync(TimeSpan.FromSeconds(1)));
        await using var stream = await device.ConnectAsync();
        var buffer = new byte[16];
        stream.ReadTimeout = Timeout.Infinite; // a simulated timeout would expire before the cancellation
        using var cancellation = new CancellationTokenSource();
        var reading = stream.ReadAsync(buffer, 0, 16, cancellation.Token);
        cancellation.Cancel();
        await Assert.ThrowsAnyAsync<OperationCanceledException>(() => reading);
        await stream.WriteAsync(new byte[] { 1, 2, 3 }, 0, 3);
        Assert.Equal(3, await stream.ReadAsync(buffer, 0, 16));
        Assert.Equal(new byte[] { 1, 2, 3 }, buffer[..3]);
    }

    [Fact]
    public void ScanYieldsEachDeviceOnce()
    {
        SimulatedWorld.Play(Echo);
        Assert.Equal("ORV-0042", Assert.Single(Scanner.Scan(TimeSpan.FromSeconds(1))).Name);
        Assert.Throws<ArgumentException>(() => SimulatedWorld.Play("{}"));
    }

    [Fact]
    public unsafe void LayoutIsThatOfTheHeader()
    {
        var structures = Load("ORV_LAYOUT").SelectMany(header => header!["structures"]!.AsArray());
        var wanted = Assert.Single(structures)!;
        Assert.Equal((int)wanted["size"]!, sizeof(Native.DiscoveredDevice));
        Native.DiscoveredDevice record;
        var start = (byte*)&record;
        var offsets = new Dictionary<string, long>
        {
            ["address"] = (byte*)&record.address - start,
            ["name"] = record.name - start,
            ["rssi"] = (byte*)&record.rssi - start,
            ["value0500"] = &record.value0500 - start,
            ["value1130"] = &record.value1130 - start,
            ["data1118"] = record.data1118 - start,
            ["padding"] = record.padding - start,
        };
        foreach (var field in wanted["fields"]!.AsArray())
        {
            Assert.Equal((long)field!["offset"]!, offsets[(string)field["name"]!]);
        }
    }
}
