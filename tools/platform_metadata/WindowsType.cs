namespace PlatformMetadata;

/// <summary>A type of the Windows Runtime in its three spellings.</summary>
/// <param name="Name">Its name in C++: <c>IVectorView&lt;Radio&gt;</c>.</param>
/// <param name="Abi">The C++ type of a passed value: <c>IVectorView&lt;Radio&gt;*</c>.</param>
/// <param name="Signature">Its part of the text from which identifiers are computed.</param>
internal sealed record WindowsType(string Name, string Abi, string Signature)
{
    /// <summary>The type of an array's elements, otherwise null.</summary>
    public WindowsType? Element { get; init; }

    /// <summary>True if the callee writes the value.</summary>
    public bool IsReference { get; init; }

    public static WindowsType Value(string name, string signature) => new(name, name, signature);

    public static WindowsType Interface(string name, string signature) => new(name, name + "*", signature);
}
