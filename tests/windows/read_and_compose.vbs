' Reads a message, decodes its attachment, then builds and assembles a new one.
' Run: cscript //nologo read_and_compose.vbs message.eml
Dim fso, msg, parts, part, attach, copy, reply, assembled
Set fso = CreateObject("Scripting.FileSystemObject")
Set msg = CreateObject("ParcelvaneLib.EMSMessageParser")
msg.FullMessage = fso.OpenTextFile(WScript.Arguments(0)).ReadAll
WScript.Echo "Subject: " & msg.Subject
WScript.Echo "From: " & msg.SenderName & " <" & msg.SenderEmail & ">"
WScript.Echo "To: " & msg.RecipientName & " <" & msg.RecipientEmail & ">"

Set parts = msg.MimePart.MimeParts
WScript.Echo "Parts: " & parts.PartsCount
For Each part In parts
  WScript.Echo "  " & part.MimeContentTypeString & " attachment=" & part.IsAttachPart & " " & part.AttachName
Next
WScript.Echo "First part: " & parts(0).DecodedBody

Set attach = parts(1)
WScript.Echo attach.AttachName & ": " & attach.DecodedBinary.DataSize & " bytes"
Set copy = CreateObject("ParcelvaneLib.EMSMimePart")
copy.BodyObject = attach.DecodedBinary
WScript.Echo copy.DecodedBody

Set reply = CreateObject("ParcelvaneLib.EMSMessageParser")
reply.SenderEmail = "anna@example.com"
reply.RecipientEmail = msg.SenderEmail
reply.Subject = "Re: " & msg.Subject
reply.TextBody = "Thanks, received."
reply.HTMLBody = "<p>Thanks, received.</p>"
reply.AddAttach "figures-copy.txt", attach.DecodedBinary
Set assembled = CreateObject("ParcelvaneLib.EMSMessageParser")
assembled.ParseObject reply.AssembleObject
WScript.Echo assembled.FullMessage
WScript.Echo "DONE"
