using System.Text.Json.Nodes;
using Xunit;

namespace Quelvixwinlib.Tests;

/// <summary>Carries out the steps of one behaviour.</summary>
internal sealed class Run
{
    private readonly Dictionary<string, IDisposable> named = new();

    internal void Steps(JsonArray steps)
    {
        foreach (var step in steps.Select(step => step!))
        {
            var start = SimulatedWorld.Now;
            if (step["error"] is { } kind)
            {
                var error = Assert.ThrowsAny<Exception>(() => Result(step));
                Assert.True((string)kind! == Kind(error), $"{step}\n{error}");
                Assert.Contains((string?)step["log"] ?? "", error.Message);
            }
            else
            {
                Assert.Equal((string?)step["gives"]?.ToJsonString(), Result(step)?.ToJsonString());
            }
            if (step["takes"] is { } takes)
            {
                Assert.InRange((SimulatedWorld.Now - start).TotalMilliseconds, (double)takes, (double)takes + 10);
            }
        }
    }

    private static string Kind(Exception error) => error switch
    {
        OrvException { Failure: OrvFailure.InUse } => "in use",
        OrvException failed => failed.Failure.ToString().ToLowerInvariant(),
        ObjectDisposedException => "closed",
        ArgumentException => "argument",
        _ => error.ToString(),
    };

    private T Named<T>(JsonNode step)
    {
        lock (named)
        {
            return (T)named[(string)(step["of"] ?? step["to"])!];
        }
    }

    private JsonNode? Keep(JsonNode step, IDisposable made)
    {
        lock (named)
        {
            named[(string)step["as"]!] = made;
        }
        return null;
    }

    private JsonNode? Result(JsonNode step)
    {
        switch ((string)step["do"]!)
        {
            case "available":
                return OrvLibrary.IsAvailable;
            case "scan":
                return Scan(step);
            case "scanner":
                var scanner = new Scanner();
                scanner.Start();
                return Keep(step, scanner);
            case "devices":
                return Named<Scanner>(step).GetDevices().Count;
            case "connect":
                return Keep(step, DeviceStream.Connect((string)step["to"]!));
            case "write":
                var data = Convert.FromHexString((string)step["data"]!);
                Named<DeviceStream>(step).Write(data, 0, data.Length);
                return data.Length;
            case "read":
                return Read(step);
            case "flush":
                return Named<DeviceStream>(step).DiscardReceived();
            case "close":
                return Close(Named<IDisposable>(step));
            case "pass":
                SimulatedWorld.PassTime(TimeSpan.FromMilliseconds((int)step["ms"]!));
                return null;
            case "log":
                return Log((bool)step["on"]!);
            default:
                return Together(step);
        }
    }

    private static JsonNode? Close(IDisposable subject)
    {
        (subject as DeviceStream)?.Disconnect();
        subject.Dispose();
        return null;
    }

    private static JsonNode? Log(bool on)
    {
        if (on)
        {
            OrvLibrary.EnableLog();
        }
        else
        {
            OrvLibrary.DisableLog();
        }
        return null;
    }

    private JsonNode Scan(JsonNode step)
    {
        using var scanner = new Scanner();
        scanner.Start();
        SimulatedWorld.PassTime(TimeSpan.FromMilliseconds((int)step["ms"]!));
        var found = scanner.GetDevices().OrderBy(device => device.Address).ToList();
        var wanted = step["gives"]!.AsArray();
        Assert.Equal(wanted.Count, found.Count);
        return new JsonArray(found.Zip(wanted, (device, keys) => (JsonNode)new JsonObject(
            keys!.AsObject().Select(key => KeyValuePair.Create(key.Key, Value(device, key.Key))))).ToArray());
    }

    private static JsonNode? Value(Device device, string key) => key switch
    {
        "address" => device.Address,
        "name" => device.Name,
        "rssi" => device.Rssi,
        "value0500" => device.Value0500,
        "value1130" => device.Value1130,
        _ => Convert.ToHexString(device.Data1118).ToLowerInvariant(),
    };

    private JsonNode Read(JsonNode step)
    {
        var stream = Named<DeviceStream>(step);
        var count = (int?)step["count"] ?? 65536;
        stream.ReadTimeout = (int?)step["wait"] ?? 5000;
        var buffer = new byte[Math.Max(count, 1)];
        try
        {
            return Convert.ToHexString(buffer, 0, stream.Read(buffer, 0, count)).ToLowerInvariant();
        }
        catch (OrvException error) when (error.Failure == OrvFailure.Timeout && stream.ReadTimeout == 0)
        {
            return ""; // a read that did not wait found no bytes
        }
    }

    private JsonNode? Together(JsonNode step)
    {
        Task.WaitAll(step["threads"]!.AsArray().Select(steps => Task.Factory.StartNew(
            () =>
            {
                for (var time = 0; time < (int)step["times"]!; ++time)
                {
                    Steps(steps!.AsArray());
                }
            },
            TaskCreationOptions.LongRunning)).ToArray());
        return null;
    }
}
