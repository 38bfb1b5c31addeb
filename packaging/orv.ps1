# Completes the commands and options of orv in PowerShell. Add this line to the file $PROFILE:
#
#     . C:\path\to\orv.ps1
#
# The completions come from the output of orv --help, so they fit the installed version.
Register-ArgumentCompleter -Native -CommandName orv, orv.exe -ScriptBlock {
    param($typed, $line, $cursor)

    $before = @($line.CommandElements | Where-Object { $_.Extent.EndOffset -lt $cursor } |
        ForEach-Object { $_.Extent.Text })
    $orv = $before[0]
    $command = @()
    $help = & $orv --help
    foreach ($word in $before | Select-Object -Skip 1) {
        if ($help -match "^  $([regex]::Escape($word)) {2,}" -and $word -notlike '-*') {
            $command += $word
            $help = & $orv @command --help
        }
    }
    foreach ($text in $help) {
        if ($text -match '^  (?:(?:-\w,)?(--[a-z-]+)|([a-z]+) {2,})') {
            $word = $Matches[1] + $Matches[2]
            $about = if ($text.Length -gt 30) { $text.Substring(30) } else { $word }
            if ($word -like "$typed*") {
                [System.Management.Automation.CompletionResult]::new($word, $word, 'ParameterValue', $about)
            }
        }
    }
}
