using System.Reflection;
using System.Runtime.InteropServices;

[assembly: AssemblyTitle("Greeter.Core")]
[assembly: AssemblyDescription("Times of the day")]
[assembly: AssemblyCompany("")]
[assembly: AssemblyProduct("Greeter")]
[assembly: AssemblyCopyright("")]
[assembly: AssemblyTrademark("")]
[assembly: ComVisible(false)]
[assembly: AssemblyVersion("1.0.0.0")]
[assembly: AssemblyFileVersion("1.0.0.0")]
