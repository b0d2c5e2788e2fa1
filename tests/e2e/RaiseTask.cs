using Microsoft.Build.Framework;

// A build task that raises one warning or error exactly as told; the tasks of the tools hide or mend some fields.
public class Raise : ITask
{
    public IBuildEngine BuildEngine { get; set; }
    public ITaskHost HostObject { get; set; }
    public bool IsError { get; set; }
    public string Code { get; set; }
    public string File { get; set; }
    public int Line { get; set; }
    public int Column { get; set; }
    public string Text { get; set; }

    public bool Execute()
    {
        if (IsError)
            BuildEngine.LogErrorEvent(new BuildErrorEventArgs("", Code, File, Line, Column, 0, 0, Text, "", "Raise"));
        else
            BuildEngine.LogWarningEvent(new BuildWarningEventArgs("", Code, File, Line, Column, 0, 0, Text, "", "Raise"));
        return true;
    }
}
