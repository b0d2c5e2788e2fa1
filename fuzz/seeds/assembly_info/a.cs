0A title
using System.Reflection;
using System.Runtime.CompilerServices;

// [assembly: AssemblyVersion("0.0.0.0")]
[assembly: AssemblyTitle("")]
[assembly: AssemblyVersion("1.0.*"), AssemblyComment(@"a""b")]
#if DEBUG
[assembly: AssemblyConfiguration("Debug")]
#else
[assembly: AssemblyConfiguration("Release")]
#endif
/* [assembly: AssemblyTitle("x")] */
