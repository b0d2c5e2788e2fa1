1T
Imports System
Imports System.Reflection
<Assembly: AssemblyTitle("a ""b""")> ' comment
#If DEBUG Then
<Assembly: AssemblyCompany(_
  "x")>
#End If
<Assembly: AssemblyVersion("1.0.*")>
