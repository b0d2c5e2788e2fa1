4t
module A
open System.Reflection
(* (* nested *) *)
[<assembly: AssemblyTitle("""a""")>]
[<assembly: AssemblyVersion("1.0.0.0"); assembly: AssemblyProduct(@"p")>]
()
