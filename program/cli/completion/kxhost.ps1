# kxhost completion powershell | Out-String | Invoke-Expression, in $PROFILE
Register-ArgumentCompleter -Native -CommandName kxhost -ScriptBlock {
  param($word, $commandAst, $cursor)
  $line = $commandAst.ToString()
  if ($cursor -gt $line.Length) { $line += ' ' } else { $line = $line.Substring(0, $cursor) }
  kxhost completion powershell -- $line 2>$null | Where-Object { $_ -ne ':files' } | ForEach-Object {
    $part = $_ -split "`t", 2
    $help = if ($part[1]) { $part[1] } else { $part[0] }
    [System.Management.Automation.CompletionResult]::new($part[0], $part[0], 'ParameterValue', $help)
  }
}
