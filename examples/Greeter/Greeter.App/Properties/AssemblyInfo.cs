using System.Reflection;
using System.Runtime.InteropServices;

[assembly: AssemblyTitle("Greeter.App")]
[assembly: AssemblyDescription("The greeter's console program")]
[assembly: AssemblyCompany("")]
[assembly: AssemblyProduct("Greeter")]
[assembly: AssemblyCopyright("")]
[assembly: AssemblyTrademark("")]
[assembly: ComVisible(false)]
[assembly: AssemblyVersion("1.0.0.0")]
[assembly: AssemblyFileVersion("1.0.0.0")]
