namespace Hosts;

/// <summary>The data, expected values and output of both programs.</summary>
internal static class Exchange
{
    public const int Total = 65536;
    public const int Block = 244;
    public const ulong Address = 0xA0B1C2D3E4F5;
    public const string Name = "ORV-0042";

    /// <summary>The payloads of the sections in the device's scan response.</summary>
    public static readonly string[] Sections = ["000564", "301101", "1811" + Convert.ToHexString("ORV-0042-SERIAL1"u8)];

    public static readonly byte[] Data = Enumerable.Range(0, Total).Select(i => (byte)((i * 167) + (i >> 8))).ToArray();

    public static IEnumerable<byte[]> Blocks => Data.Chunk(Block);

    public static void Check(string step, bool isRight)
    {
        Console.WriteLine($"{(isRight ? "ok" : "FAILED")}: {step}");
        if (!isRight)
        {
            throw new InvalidOperationException(step);
        }
    }

    /// <summary>Returns whether <paramref name="holds"/> becomes true within 200 checks, 10 s.</summary>
    public static bool Until(Func<bool> holds)
    {
        for (var i = 0; i < 200; ++i)
        {
            if (holds())
            {
                return true;
            }
            Thread.Sleep(50);
        }
        return false;
    }
}
